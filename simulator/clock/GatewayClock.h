#pragma once

#include <ctime>

#include "simulator/clock/ClockControl.h"

namespace Simulator {

/// Controls the daemon's clock.
class GatewayClock {
 public:
  /// Creates the shared files. A failure ends the process. `hold`: see ClockControl.
  explicit GatewayClock(bool hold);

  /// Forgets the sleeps of the previous daemon. With `hold`, the clock advances by one second.
  void reset();
  /// Returns the wall clock as the daemon sees it.
  std::time_t now() const;
  /// Sets the wall clock, and moves the monotonic clock by the same amount.
  void set(std::time_t then);

  /// Whether the daemon sleeps and grant() has not ended the sleep.
  bool sleeping() const { return control_->begun != control_->ended && control_->granted != control_->begun; }
  /// Ends the current sleep, or the next one when there is none.
  void grant();
  /// Makes the next daemon stop (SIGSTOP) as soon as it has forked.
  void stopNextDaemon() { control_->stops = 1; }

 private:
  ClockControl* control_;
  int wake_;
};

}  // namespace Simulator
