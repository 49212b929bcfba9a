#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>

#include "simulator/clock/GatewayClock.h"
#include "simulator/support/Footprint.h"
#include "simulator/support/Waiting.h"

namespace Simulator {
/// Starts and stops the daemon, and runs its passes. Makes this process the parent of the detached daemon.
class DaemonProcess {
 public:
  struct Paths {
    std::string program;       ///< the daemon's executable
    std::string clockLibrary;  ///< preloaded into the daemon
    std::string toolFolder;    ///< the first folder in the daemon's PATH
  };
  /// The result of a wait for a pass. Yes: the pass ended. Ended: the daemon ended. NotYet: the pass runs.
  enum class Passed { Yes, Ended, NotYet };

  /// `hangs` returns true while a fault makes the daemon hang. Each wait for a pass then ends at once.
  DaemonProcess(Paths paths, GatewayClock& clock, std::function<bool()> hangs);

  /// Starts the daemon and waits until it has detached. Returns an empty string, or one line about the error.
  [[nodiscard]] std::string start();
  /// Sends SIGTERM and waits up to ten seconds. Returns true if the daemon has ended.
  bool stop();
  bool running();
  pid_t pid() const { return pid_; }
  Footprint footprint() const { return Footprint::of(pid_); }
  bool signal(int number);  ///< sends a signal; returns false if the daemon is not running
  /// Returns how the daemon ended: "0" or "signal 9", for example, and a sanitizer's report if there is one.
  /// Returns an empty string if the daemon is running or was not started.
  std::string ending();

  /// Waits up to `seconds` until the daemon sleeps. The daemon sleeps after each pass.
  Passed awaitSleep(double seconds);
  /// Runs a pass: ends the daemon's sleep, and waits up to a minute until the daemon sleeps again.
  Passed pass();
  /// Waits up to `seconds` until `done` returns true. Returns false if `done` has not returned true.
  bool wait(double seconds, const std::function<bool()>& done);

  /// If this is true, every wait ends at once. A signal handler may set this variable.
  std::atomic<bool> interrupted{false};
  std::function<void()> pause = sleepAMoment;  ///< a wait calls this function between two checks

 private:
  void ended(int status);

  const Paths paths_;
  GatewayClock& clock_;
  const std::function<bool()> hangs_;
  pid_t pid_ = 0;
  std::string ending_;
};
}  // namespace Simulator
