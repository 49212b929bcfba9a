#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>

#include "simulator/clock/GatewayClock.h"
#include "simulator/support/Footprint.h"
#include "simulator/support/Waiting.h"

namespace Simulator {

/// The daemon's process and its passes. The daemon detaches from whoever starts it, so the process that holds
/// this object becomes the reaper of what its descendants leave behind.
class DaemonProcess {
 public:
  struct Paths {
    std::string program;       ///< the daemon's executable
    std::string clockLibrary;  ///< what is preloaded into it
    std::string toolFolder;    ///< comes first in its PATH
  };
  enum class Passed { Yes, Ended, NotYet };

  /// `hangs` tells whether the daemon waits for something that will not come: no pass is then waited for.
  DaemonProcess(Paths paths, GatewayClock& clock, std::function<bool()> hangs);

  /// Runs the program until it has detached. What it gives is empty, or says in one line why it could not be
  /// started, or that it ended itself before it had detached.
  [[nodiscard]] std::string start();
  /// Asks it to end, and waits up to ten seconds; whether it has ended.
  bool stop();
  /// Whether it is running, or has ended by now.
  bool running();
  pid_t pid() const { return pid_; }
  Footprint footprint() const { return Footprint::of(pid_); }
  /// Sends a signal; false when it is not running.
  bool signal(int number);
  /// How the last one ended: "0", "1", "signal 9"; empty when it is running or was never started. A report of
  /// a sanitizer is part of it.
  std::string ending();

  /// Waits up to `seconds` until the daemon has gone to sleep.
  Passed awaitSleep(double seconds);
  /// Ends the daemon's sleep and waits up to a minute until it sleeps again.
  Passed pass();
  /// Waits up to `seconds` for anything that is to happen; whether it has.
  bool wait(double seconds, const std::function<bool()>& done);

  /// Lets every wait end early; a signal handler may set it, too.
  std::atomic<bool> interrupted{false};
  /// What passes the moments of a wait.
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
