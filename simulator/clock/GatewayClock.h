#pragma once

#include <ctime>

#include "simulator/clock/ClockControl.h"

namespace Simulator {

/// The gateway's end of the daemon's clock.
class GatewayClock {
 public:
  /// Creates the shared files; ends the process with a line on standard error when it cannot. `hold` as in
  /// ClockControl.
  explicit GatewayClock(bool hold);

  /// To be called before a daemon starts: no sleep has begun, and time goes on, by a second where only sleeps
  /// take any.
  void reset();
  /// The wall clock as the daemon sees it.
  std::time_t now() const;
  /// Sets the wall clock, and the monotonic one on or back by as much.
  void set(std::time_t then);

  /// Whether a sleep goes on that has not been told to end.
  bool sleeping() const { return control_->begun != control_->ended && control_->granted != control_->begun; }
  /// Ends the sleep that goes on, or else the next one.
  void grant();

 private:
  ClockControl* control_;
  int wake_;
};

}  // namespace Simulator
