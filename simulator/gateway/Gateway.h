#pragma once

#include <string>
#include <vector>

#include "simulator/clock/GatewayClock.h"
#include "simulator/gateway/DaemonProcess.h"
#include "simulator/gateway/Disk.h"
#include "simulator/gateway/LocalApiServer.h"
#include "simulator/gateway/MessageFolders.h"
#include "simulator/gateway/Phones.h"
#include "simulator/gateway/Program.h"
#include "simulator/gateway/Responder.h"
#include "simulator/gateway/Settings.h"
#include "simulator/gateway/SyslogServer.h"
#include "simulator/modem/Modem.h"

namespace Simulator {

/// The gateway around the daemon: everything that the daemon uses, at the absolute paths where the daemon
/// expects it. private-gateway makes these paths private, so that each private gateway has one object.
class Gateway {
 public:
  struct Options {
    std::string program;      ///< the daemon's executable
    std::string buildFolder;  ///< holds the simulated tool and the clock library
    bool hold = false;        ///< the clock stands still between requested passes
    std::string tool = "";    ///< replaces the simulated tool, unless it is empty
    bool servesApi = true;    ///< false: the user's program serves the API
  };

  /// Starts everything except the daemon. A failure ends the process with a line on standard error.
  explicit Gateway(const Options& options);
  /// Repairs every fault and ends the daemon; by SIGKILL if it still runs after ten seconds.
  ~Gateway();

  Modem modem;
  SyslogServer syslog;
  Settings settings;
  LocalApiServer api;
  GatewayClock clock;
  MessageFolders folders;
  DaemonProcess daemon;
  Program program;
  Phones phones;
  Responder responder;
  Disk var{"/var"};
  Disk tmp{"/tmp"};

  bool servesApi() const { return servesApi_; }
  /// Creates the message folders and runs `command` beside the daemon, with the tool and veldctl in its PATH.
  void runBeside(const std::string& command);
  /// Runs veldctl, or $VELDCTL. Returns its output, with its exit status in a last line unless that is 0.
  std::string veldctl(const std::vector<std::string>& words) const;

  /// Puts the modem's tool into the PATH of the daemon, or removes it.
  void setToolThere(bool there);

  /// Ends the faults of one part, as in faults(), but not the modem's refusals. False if bind() fails.
  bool repair(const std::string& part = "all");
  /// Returns the faults that are set, one line each, such as "tool: gone".
  std::vector<std::string> faults();
  /// Returns the fault that the daemon waits for; empty if it does not hang.
  std::string hang() const;
  unsigned hangSeconds() const;  ///< how long the daemon has waited for that

 private:
  std::string tool_;
  bool servesApi_;
};

}  // namespace Simulator
