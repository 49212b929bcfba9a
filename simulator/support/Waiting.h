#pragma once

#include <functional>

namespace Simulator {
/// Sleeps for less than a millisecond. A wait calls this function between two checks of its condition.
void sleepAMoment();

/// Waits up to `seconds` until `done` returns true. Returns false if `done` did not return true in this time.
/// Calls `pause` between two checks. If the caller holds a lock, `pause` can release the lock for a moment.
bool waitUntil(double seconds, const std::function<bool()>& done,
               const std::function<void()>& pause = sleepAMoment);
}  // namespace Simulator
