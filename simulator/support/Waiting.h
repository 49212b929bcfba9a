#pragma once

#include <functional>

namespace Simulator {

/// Sleeps for less than a millisecond, between two checks of a wait.
void sleepAMoment();

/// Waits up to `seconds` until `done` returns true. Returns whether it did. Calls `pause` between two checks;
/// a caller that holds a lock can release it there.
bool waitUntil(double seconds, const std::function<bool()>& done,
               const std::function<void()>& pause = sleepAMoment);

}  // namespace Simulator
