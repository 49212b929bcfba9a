#pragma once

#include <functional>

namespace Simulator {

/// Sleeps between two looks of a wait.
void sleepAMoment();

/// Waits up to `seconds` until `done` holds. Whether it does. `pause` is called between two looks; a caller
/// that holds a lock can release it there for a moment.
bool waitUntil(double seconds, const std::function<bool()>& done,
               const std::function<void()>& pause = sleepAMoment);

}  // namespace Simulator
