#pragma once

#include <functional>

namespace Simulator {

/// Sleeps for the moment between two looks of a wait.
void sleepAMoment();

/// Waits until `done` holds, up to `seconds`; whether it came to that. `pause` is what passes the moment
/// between two looks: who holds a lock lets others in there.
bool waitUntil(double seconds, const std::function<bool()>& done,
               const std::function<void()>& pause = sleepAMoment);

}  // namespace Simulator
