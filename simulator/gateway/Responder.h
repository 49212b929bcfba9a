#pragma once

#include <string>
#include <vector>

#include "simulator/gateway/DaemonProcess.h"
#include "simulator/gateway/LocalApiServer.h"
#include "simulator/gateway/MessageFolders.h"

namespace Simulator {

/// The program of the gateway that does what its API was asked for: it answers the sender by a message that
/// it queues, and a reboot restarts the daemon.
class Responder {
 public:
  struct Event {
    std::string text;  ///< what was done
    bool isReboot;
  };

  Responder(const LocalApiServer& api, const MessageFolders& folders, DaemonProcess& daemon)
      : api_(api), folders_(folders), daemon_(daemon) {}

  /// Carries out what was asked for, and accepted, since the last call.
  void carryOut();
  /// All that was done so far.
  const std::vector<Event>& events() const { return events_; }

 private:
  void carryOut(const LocalApiServer::Request& request);

  const LocalApiServer& api_;
  const MessageFolders& folders_;
  DaemonProcess& daemon_;
  std::size_t seen_ = 0;  ///< of the requests
  std::vector<Event> events_;
};

}  // namespace Simulator
