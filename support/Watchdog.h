#pragma once

namespace Orvel {
/// Reports to the service manager that the daemon is alive. systemd restarts the daemon if no report arrives
/// within the time that the unit sets (WatchdogSec).
class Watchdog {
 public:
  /// Reads the name of the manager's socket from the environment variable NOTIFY_SOCKET. Removes the variable
  /// so that no child process can report for the daemon. Without the variable, feed() does nothing.
  static void setup();

  /// Sends one report without blocking. A report can be lost; the next call sends another report.
  static void feed();
};
}  // namespace Orvel
