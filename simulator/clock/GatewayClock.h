#pragma once

#include <ctime>

#include "simulator/clock/ClockControl.h"

namespace Simulator {
/// Controls the daemon's clock and sleeps.
class GatewayClock {
 public:
  /// Creates the shared file and the FIFO. A failure ends the process. ClockControl explains `hold`.
  explicit GatewayClock(bool hold);

  /// Resets the counters of sleeps for a new daemon. With `hold`, advances the clocks by one second.
  void reset();
  /// Returns the time of the daemon's wall clock.
  std::time_t now() const;
  /// Sets the daemon's wall clock, and moves the monotonic clock by the same amount.
  void set(std::time_t then);

  /// Returns true if the daemon sleeps and grant() has not ended this sleep.
  bool sleeping() const { return control_->begun != control_->ended && control_->granted != control_->begun; }
  /// Ends the current sleep. If the daemon does not sleep, its next sleep ends at once.
  void grant();
  /// Makes the next daemon send itself SIGSTOP directly after its fork.
  void stopNextDaemon() { control_->stops = 1; }

 private:
  ClockControl* control_;
  int wake_;
};
}  // namespace Simulator
