#pragma once

#include <ctime>

#include "simulator/clock/ClockControl.h"

namespace Simulator {

/// The gateway's end of the daemon's clock.
class GatewayClock {
 public:
  /// Creates the shared files. Ends the process with a line on standard error when it cannot. `hold`: see
  /// ClockControl.
  explicit GatewayClock(bool hold);

  /// Call this before a daemon starts. It forgets the sleeps of the daemon before. With `hold` the clock
  /// advances by a second.
  void reset();
  /// The wall clock as the daemon sees it.
  std::time_t now() const;
  /// Sets the wall clock, and moves the monotonic clock by the same amount.
  void set(std::time_t then);

  /// Whether the daemon sleeps and was not told to end the sleep.
  bool sleeping() const { return control_->begun != control_->ended && control_->granted != control_->begun; }
  /// Ends the current sleep, or the next one when there is none.
  void grant();

 private:
  ClockControl* control_;
  int wake_;
};

}  // namespace Simulator
