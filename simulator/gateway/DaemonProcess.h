#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>

#include "simulator/clock/GatewayClock.h"
#include "simulator/support/Footprint.h"
#include "simulator/support/Waiting.h"

namespace Simulator {

/// The daemon's process and its passes. This process is the subreaper, so the detached daemon is its child.
class DaemonProcess {
 public:
  struct Paths {
    std::string program;       ///< the daemon's executable
    std::string clockLibrary;  ///< preloaded into the daemon
    std::string toolFolder;    ///< comes first in its PATH
  };
  /// Whether a pass has ended. Ended: the daemon has ended instead.
  enum class Passed { Yes, Ended, NotYet };

  /// `hangs`: whether the daemon waits until a fault is repaired. If so, no call waits for a pass.
  DaemonProcess(Paths paths, GatewayClock& clock, std::function<bool()> hangs);

  /// Starts the program and waits until it has detached. Returns an empty string, or one line on the failure.
  [[nodiscard]] std::string start();
  /// Sends SIGTERM and waits up to ten seconds. Returns whether the daemon has ended.
  bool stop();
  bool running();
  pid_t pid() const { return pid_; }
  Footprint footprint() const { return Footprint::of(pid_); }
  bool signal(int number);  ///< sends a signal; false if the daemon is not running
  /// Returns how the last daemon ended: "0", "signal 9", with a sanitizer's report. Empty before it has
  /// ended.
  std::string ending();

  /// Waits up to `seconds` until the daemon sleeps.
  Passed awaitSleep(double seconds);
  /// Ends the daemon's sleep and waits up to a minute until it sleeps again.
  Passed pass();
  /// Waits up to `seconds` until `done` returns true. Returns whether it did.
  bool wait(double seconds, const std::function<bool()>& done);

  /// True ends every wait early. A signal handler may set this.
  std::atomic<bool> interrupted{false};
  std::function<void()> pause = sleepAMoment;  ///< a wait calls this between two checks

 private:
  void ended(int status);

  const Paths paths_;
  GatewayClock& clock_;
  const std::function<bool()> hangs_;
  pid_t pid_ = 0;
  std::string ending_;
};

}  // namespace Simulator
