#pragma once

#include <string>
#include <vector>

#include "simulator/gateway/DaemonProcess.h"
#include "simulator/gateway/LocalApiServer.h"
#include "simulator/gateway/MessageFolders.h"

namespace Simulator {

/// Carries out the commands of the API: queues an answer to the sender, and restarts the daemon for a reboot.
class Responder {
 public:
  struct Event {
    std::size_t request;  ///< its number among the requests of the API
    std::string text;     ///< what was done
  };

  Responder(const LocalApiServer& api, const MessageFolders& folders, DaemonProcess& daemon)
      : api_(api), folders_(folders), daemon_(daemon) {}

  /// Carries out the commands that the API accepted since the last call.
  void carryOut();

  const std::vector<Event>& events() const { return events_; }

 private:
  std::string carryOut(const LocalApiServer::Request& request);

  const LocalApiServer& api_;
  const MessageFolders& folders_;
  DaemonProcess& daemon_;
  std::size_t next_ = 0;  ///< the first request that carryOut() has not handled
  std::vector<Event> events_;
};

}  // namespace Simulator
