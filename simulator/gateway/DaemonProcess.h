#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>

#include "simulator/clock/GatewayClock.h"
#include "simulator/support/Footprint.h"
#include "simulator/support/Waiting.h"

namespace Simulator {

/// The daemon's process and its passes. The daemon detaches from its parent, so the constructor makes this
/// process the reaper of its orphaned descendants.
class DaemonProcess {
 public:
  struct Paths {
    std::string program;       ///< the daemon's executable
    std::string clockLibrary;  ///< preloaded into the daemon
    std::string toolFolder;    ///< comes first in its PATH
  };
  /// Whether a pass has ended. Ended: no, the daemon has.
  enum class Passed { Yes, Ended, NotYet };

  /// `hangs` returns whether the daemon waits for something that only a repair ends. No call then waits for a
  /// pass.
  DaemonProcess(Paths paths, GatewayClock& clock, std::function<bool()> hangs);

  /// Starts the program and waits until it has detached. Returns an empty string, or one line that says why
  /// it could not start or how it ended before it detached.
  [[nodiscard]] std::string start();
  /// Sends SIGTERM and waits up to ten seconds. Returns whether the daemon has ended.
  bool stop();
  bool running();
  pid_t pid() const { return pid_; }
  Footprint footprint() const { return Footprint::of(pid_); }
  /// Sends a signal; false if the daemon is not running.
  bool signal(int number);
  /// Returns how the last daemon ended: "0", "1", "signal 9", followed by a sanitizer's report if there is
  /// one. Empty while the daemon runs, and before the first start.
  std::string ending();

  /// Waits up to `seconds` until the daemon sleeps.
  Passed awaitSleep(double seconds);
  /// Ends the daemon's sleep and waits up to a minute until it sleeps again.
  Passed pass();
  /// Waits up to `seconds` until `done` returns true. Returns whether it did.
  bool wait(double seconds, const std::function<bool()>& done);

  /// True ends every wait early. A signal handler may set this.
  std::atomic<bool> interrupted{false};
  /// A wait calls this between two checks.
  std::function<void()> pause = sleepAMoment;

 private:
  void ended(int status);

  const Paths paths_;
  GatewayClock& clock_;
  const std::function<bool()> hangs_;
  pid_t pid_ = 0;
  std::string ending_;
};

}  // namespace Simulator
