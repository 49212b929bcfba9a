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
/// The simulated gateway: everything that the daemon uses, at the absolute paths that the daemon expects.
/// Each private gateway has its own copy of these paths, and can have one object of this class.
class Gateway {
 public:
  struct Options {
    std::string program;      ///< the daemon's executable
    std::string buildFolder;  ///< holds the simulated tool and the clock library
    bool hold = false;        ///< true: the clock advances only when a command runs a pass
    std::string tool = "";    ///< the program that replaces the simulated tool; empty: the simulated tool
    bool servesApi = true;    ///< false: a program of the user serves the API
  };

  /// Starts everything except the daemon. A failure ends the process with a line on standard error.
  explicit Gateway(const Options& options);
  /// Repairs every fault and stops the daemon. Kills the daemon if it still runs after ten seconds.
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
  /// Runs veldctl or the command $VELDCTL. Returns its output, and "status N" if the exit status N is not 0.
  std::string veldctl(const std::vector<std::string>& words) const;

  /// Adds the modem's tool to the PATH of the daemon, or removes the tool.
  void setToolThere(bool there);

  /// Ends "all" faults, or the faults of a part such as "tool". The modem still refuses the same numbers.
  /// Returns false if a socket cannot be bound.
  bool repair(const std::string& part = "all");
  /// Returns the faults that are set, one line each, such as "tool: gone".
  std::vector<std::string> faults();
  /// Returns the reason why the daemon hangs; an empty string if the daemon does not hang.
  std::string hang() const;
  unsigned hangSeconds() const;  ///< how long the daemon has been hanging

 private:
  std::string tool_;
  bool servesApi_;
};
}  // namespace Simulator
