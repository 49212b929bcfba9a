#pragma once

namespace Orvel {

/// Tells the service manager that the daemon is alive. systemd restarts a daemon that has not done so for the
/// time that its unit sets (WatchdogSec).
class Watchdog {
 public:
  /// Reads the manager's socket from NOTIFY_SOCKET and removes the variable, so that no child process can
  /// speak for the daemon. Without the variable, feed() does nothing.
  static void setup();

  /// Sends one sign of life. Does not block. A sign that is lost does no harm: the next one follows.
  static void feed();
};

}  // namespace Orvel
