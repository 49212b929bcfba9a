#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>

#include "simulator/clock/GatewayClock.h"
#include "simulator/support/Footprint.h"
#include "simulator/support/Waiting.h"

namespace Simulator {

/// The daemon's process and its passes. The daemon detaches from its parent, so the process with this object
/// becomes the reaper of its orphaned descendants.
class DaemonProcess {
 public:
  struct Paths {
    std::string program;       ///< the daemon's executable
    std::string clockLibrary;  ///< preloaded into the daemon
    std::string toolFolder;    ///< comes first in its PATH
  };
  enum class Passed { Yes, Ended, NotYet };

  /// `hangs` tells whether the daemon waits for something that only a repair ends. No call then waits for a
  /// pass.
  DaemonProcess(Paths paths, GatewayClock& clock, std::function<bool()> hangs);

  /// Runs the program until it has detached. Returns an empty string, or one line on why it could not be
  /// started, or on how it ended before it detached.
  [[nodiscard]] std::string start();
  /// Sends SIGTERM and waits up to ten seconds. Whether the daemon has ended.
  bool stop();
  bool running();
  pid_t pid() const { return pid_; }
  Footprint footprint() const { return Footprint::of(pid_); }
  /// Sends a signal; false when the daemon is not running.
  bool signal(int number);
  /// How the last daemon ended: "0", "1", "signal 9", followed by a sanitizer's report if there is one. Empty
  /// while it runs, and before the first start.
  std::string ending();

  /// Waits up to `seconds` until the daemon sleeps.
  Passed awaitSleep(double seconds);
  /// Ends the daemon's sleep and waits up to a minute until it sleeps again.
  Passed pass();
  /// Waits up to `seconds` until `done` holds. Whether it does.
  bool wait(double seconds, const std::function<bool()>& done);

  /// Ends every wait early. A signal handler may set it.
  std::atomic<bool> interrupted{false};
  /// Called between two looks of a wait.
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
