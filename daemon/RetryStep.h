#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "daemon/Outbox.h"
#include "storage/CheckedStorage.h"

/// Whole seconds of a clock that never goes back. It may wrap.
using MonotonicClock = std::function<std::uint32_t()>;

/// The system's monotonic clock; 0, and a line in the log, when it cannot be read.
std::uint32_t monotonicSeconds();

/// The state of the retry step between passes. Times are in seconds. All failed messages share the attempts
/// and their intervals.
struct RetryState {
  bool timerStarted = false;              ///< the failure timer runs
  std::uint32_t lastTime = 0;             ///< when time was last added up
  std::uint32_t time_not_attempting = 0;  ///< since the last dial attempt
  std::uint32_t nowTime = 0;              ///< the clock in this pass
  std::uint32_t current_timing = 0;       ///< the interval before the next dial attempt
  std::uint32_t dialAttempt = 1;          ///< the number of the next dial attempt
};

/// Whether a failed record has "retries" left.
bool mayRetry(const Json::Value& record);

/// If the failure timer does not run, reads the clock and starts it.
void startFailureTimer(RetryState& state, const MonotonicClock& clock);

/// Call it once per pass. Adds up the time since the last dial attempt; when it reaches the current interval,
/// sends every failed message that has "retries" left. A sent message moves to Sent; any other stays under
/// Failed with one retry less. If no message has retries left, the schedule restarts.
///
/// `timings` holds the intervals in seconds, one for each dial attempt; the last one repeats. If it is empty,
/// no message is retried.
void retryFailedMessages(Outbox& outbox, CheckedStorage& storage, const std::vector<std::uint32_t>& timings,
                         RetryState& state, const MonotonicClock& clock = monotonicSeconds);
