#pragma once

namespace Orvel {

/// Signs of life to the service manager, where there is one: systemd starts a daemon anew that has given none
/// for the time that its unit sets (WatchdogSec).
class Watchdog {
 public:
  /// Takes the manager's socket out of the environment (NOTIFY_SOCKET), so that no child of the daemon's can
  /// speak for it. Where none is named, no signs are given.
  static void setup();

  /// Gives a sign. Does not block; a sign that does not get through is made good by the next one.
  static void feed();
};

}  // namespace Orvel
