#pragma once

#include <string>
#include <vector>

#include "simulator/clock/GatewayClock.h"
#include "simulator/gateway/DaemonProcess.h"
#include "simulator/gateway/Disk.h"
#include "simulator/gateway/LocalApiServer.h"
#include "simulator/gateway/MessageFolders.h"
#include "simulator/gateway/Phones.h"
#include "simulator/gateway/Responder.h"
#include "simulator/gateway/Settings.h"
#include "simulator/gateway/SyslogServer.h"
#include "simulator/modem/Modem.h"

namespace Simulator {

/// The gateway around the daemon: everything that the daemon meets, at the absolute paths where it looks for
/// it. One a file system; to be run by private-gateway.
class Gateway {
 public:
  struct Options {
    std::string program;      ///< the daemon
    std::string buildFolder;  ///< where the tool and the clock library lie
    bool hold = false;        ///< time stands still but for passes that are asked for
  };

  /// Brings up everything but the daemon.
  explicit Gateway(const Options& options);
  /// Puts right what is wrong and ends the daemon, by force if it has not ended itself within a few seconds.
  ~Gateway();

  Modem modem;
  SyslogServer syslog;
  Settings settings;
  LocalApiServer api;
  GatewayClock clock;
  MessageFolders folders;
  DaemonProcess daemon;
  Phones phones;
  Responder responder;
  Disk var{"/var"};
  Disk tmp{"/tmp"};

  /// Runs the operator's program with these words, and gives what it said: all of it, and its status when
  /// that is not 0. VELDCTL is another command line for it.
  std::string veldctl(const std::vector<std::string>& words) const;

  /// Whether the `sms` tool is in the daemon's path.
  void setToolThere(bool there);

  /// Puts "api", "tool", "syslog", "disk", "tmp" or all of them right, but not the numbers that the modem
  /// refuses. False when a socket cannot be bound again.
  bool repair(const std::string& part = "all");
  /// What is wrong now, a line each: "tool: gone".
  std::vector<std::string> faults();
  /// What the daemon waits for that will not come before it is repaired, and how long already; empty if
  /// nothing.
  std::string hang() const;

 private:
  std::string tool_;
  std::string veldctl_;
};

}  // namespace Simulator
