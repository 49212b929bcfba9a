#pragma once

#include <string>
#include <vector>

#include "simulator/gateway/DaemonProcess.h"
#include "simulator/gateway/LocalApiServer.h"
#include "simulator/gateway/MessageFolders.h"

namespace Simulator {
/// Carries out the commands of the API: queues an answer to the sender. For a reboot, restarts the daemon.
class Responder {
 public:
  struct Event {
    std::size_t request;  ///< the number of the request, as in LocalApiServer::requests()
    std::string text;     ///< a sentence about the result
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
