#include "daemon/RetryStep.h"

#include <algorithm>
#include <ctime>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"

// Compares by the JSON library's order of values, where unsigned numbers and text are greater than any signed
// number. The last failed retry leaves an unsigned 0.
bool mayRetry(const Json::Value& record) {
  const Json::Value& retries = MessageRecord::member(record, MessageRecord::Key::Retries);
  return retries > Json::Value(0) && retries != Json::Value(0u);
}

std::uint32_t monotonicSeconds() {
  timespec now{};
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
    ORVEL_LOG(ERROR, "VELD: Error getting time");
    return 0;
  }
  return static_cast<std::uint32_t>(now.tv_sec);
}

void startFailureTimer(RetryState& state, const MonotonicClock& clock) {
  if (state.timerStarted) return;
  state.lastTime = clock();
  state.timerStarted = true;
}

void retryFailedMessages(Outbox& outbox, CheckedStorage& storage, const std::vector<std::uint32_t>& timings,
                         RetryState& state, const MonotonicClock& clock) {
  if (timings.empty()) return;
  const Json::Value failed = storage.load(MessageStatus::Failed);
  if (std::none_of(failed.begin(), failed.end(), mayRetry)) {
    state.dialAttempt = 1;
    state.lastTime = 0;
    state.time_not_attempting = 0;
    state.timerStarted = false;
    return;
  }
  startFailureTimer(state, clock);
  state.nowTime = clock();

  if (state.time_not_attempting != 0)
    ORVEL_LOG(DEBUG, "VELD: Failed sms has not redialed in %d seconds.  Dial attempt: %d",
              state.time_not_attempting, state.dialAttempt);
  state.current_timing = timings[std::min<std::size_t>(state.dialAttempt, timings.size()) - 1];
  ORVEL_LOG(DEBUG, "VELD: time_not_attempting=[%d], current_timing=[%d]", state.time_not_attempting,
            state.current_timing);
  state.time_not_attempting += state.nowTime - state.lastTime;
  state.lastTime = state.nowTime;
  if (state.time_not_attempting < state.current_timing) return;

  ORVEL_LOG(DEBUG, "VELD: Try to send failed sms.");
  for (const bool interrupted : {false, true})
    for (const Json::Value& record : failed)
      if (mayRetry(record) && outbox.wasInterrupted(record) == interrupted &&
          !outbox.isAnswered(record, MessageStatus::Failed))
        outbox.send(record, MessageStatus::Failed);
  ++state.dialAttempt;
  state.time_not_attempting = 0;
}
