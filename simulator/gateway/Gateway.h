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

/// The gateway around the daemon: everything that the daemon uses, at the absolute paths where it expects it.
/// private-gateway makes these paths private, so each has one gateway.
class Gateway {
 public:
  struct Options {
    std::string program;      ///< the daemon's executable
    std::string buildFolder;  ///< holds the simulated tool and the clock library
    bool hold = false;        ///< the clock stands still between the passes that are asked for
    std::string tool = "";    ///< the modem's tool; empty: the simulated one
    bool servesApi = true;    ///< false: a program of the user's serves the API
  };

  /// Brings up everything but the daemon. Ends the process with a line on standard error when it cannot.
  explicit Gateway(const Options& options);
  /// Repairs every fault and ends the daemon, after ten seconds by SIGKILL.
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
  /// Runs `command` beside the daemon, with the tool and veldctl in its PATH and the message folders in
  /// place.
  void runBeside(const std::string& command);
  /// Runs veldctl with these words. Returns its output, and its exit status as the last line unless that is
  /// 0. The environment variable VELDCTL replaces the command line of veldctl.
  std::string veldctl(const std::vector<std::string>& words) const;

  /// Puts the modem's tool into the PATH of the daemon, or removes it.
  void setToolThere(bool there);

  /// Ends the faults of "api", "tool", "syslog", "disk", "tmp" or "all"; the modem still refuses the numbers
  /// that it refused. False when a socket cannot be bound.
  bool repair(const std::string& part = "all");
  /// The faults that are set, one line each: "tool: gone".
  std::vector<std::string> faults();
  /// What the daemon waits for until it is repaired; empty if nothing.
  std::string hang() const;
  /// How long it has waited.
  unsigned hangSeconds() const;

 private:
  std::string tool_;
  bool servesApi_;
};

}  // namespace Simulator
