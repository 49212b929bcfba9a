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

/// What the retry step knows from one pass to the next. Times are in seconds. The attempts and their
/// intervals are shared by all failed messages.
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

/// Starts the failure timer, unless it runs; only then is the clock read.
void startFailureTimer(RetryState& state, const MonotonicClock& clock);

/// Once per pass: adds up the time since the last one, and when it reaches the interval of the current dial
/// attempt, sends every failed message that has "retries" left. A message that is sent is moved to Sent; one
/// that is not stays under Failed with one retry less. Without a message to try, the schedule starts anew.
///
/// `timings` are the intervals in seconds: the first dial attempt waits the first, and so on; from the last
/// one on all wait the last. When there are none, nothing is ever tried.
void retryFailedMessages(Outbox& outbox, CheckedStorage& storage, const std::vector<std::uint32_t>& timings,
                         RetryState& state, const MonotonicClock& clock = monotonicSeconds);
