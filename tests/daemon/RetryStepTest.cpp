#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

#include "daemon/RetryStep.h"
#include "storage/MessageStatus.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"
#include "tests/daemon/FakeProvider.h"
#include "tests/storage/FakeStorage.h"

using testing::ElementsAre;
using namespace MessageStatus;

namespace {
bool clockFails = false;
}

// Stands before the C library's.
extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
#ifdef SYS_clock_gettime64
  constexpr long call = SYS_clock_gettime64;
#else
  constexpr long call = SYS_clock_gettime;
#endif
  return clockFails && clock == CLOCK_MONOTONIC ? -1 : static_cast<int>(syscall(call, clock, now));
}

namespace {

/// A step every 5 seconds, beginning where the clock is about to wrap.
class RetryStep : public testing::Test {
 protected:
  RetryStep() {
    provider_.refused = {"bad"};
    storage_.journal = &journal_;
  }

  void step(const std::vector<std::uint32_t>& timings) {
    retryFailedMessages(provider_, storage_, journal_, timings, state_, [this] { return now_; });
  }

  /// The seconds after the first step at which something was sent.
  std::vector<std::uint32_t> attemptTimes(const std::vector<std::uint32_t>& timings, std::uint32_t seconds) {
    std::vector<std::uint32_t> times;
    const std::uint32_t begin = now_;
    for (; now_ - begin <= seconds; now_ += 5) {
      const std::size_t before = provider_.attempts.size();
      step(timings);
      if (provider_.attempts.size() > before) times.push_back(now_ - begin);
    }
    return times;
  }

  std::uint32_t now_ = 0xFFFFFFFA;
  FakeProvider provider_;
  FakeStorage storage_;
  const TemporaryFolder root_;
  Journal journal_{root_.path, 100, 100};
  RetryState state_;
};

}  // namespace

struct ScheduleRow {
  const char* name;
  std::vector<std::uint32_t> timings;
  const char* retries;  ///< of a message that is always refused
  std::vector<std::uint32_t> attempts;
  const char* retriesLeft;
};
const ScheduleRow scheduleRows[] = {
    {"ThreeIntervals", {30, 60, 300}, "3", {30, 90, 390}, "0"},
    {"LastIntervalRepeats", {30, 60}, "4", {30, 90, 150, 210}, "0"},
    {"OneInterval", {10}, "3", {10, 20, 30}, "0"},
    {"GranularityOfAPass", {7}, "2", {10, 20}, "0"},
    {"FirstIntervalOfNone", {0, 60}, "2", {0, 60}, "0"},
    {"NegativeIntervalNeverComes", {4294967295u}, "2", {}, "2"},
    {"NoIntervals", {}, "3", {}, "3"},
    {"NoRetriesLeft", {10}, "0", {}, "0"},
    {"NegativeRetries", {10}, "-1", {}, "-1"},
    {"NullRetries", {10}, "null", {}, "null"},
    {"TextRetries", {10}, "'many'", {10}, "0"},
    {"FractionOfARetry", {10}, "0.5", {10}, "0"},
    {"RetriesBeyond32Bits", {10}, "5000000000", {10}, "0"},
};
class Schedule : public RetryStep, public testing::WithParamInterface<ScheduleRow> {};
TEST_P(Schedule, IsKept) {
  Json::Value record = json("{'guid':'1','recipient':'bad'}");
  record["retries"] = json(GetParam().retries);
  storage_.save(record, Failed);
  EXPECT_EQ(attemptTimes(GetParam().timings, 1000), GetParam().attempts);
  ASSERT_EQ(storage_.records[Failed].size(), 1u);
  EXPECT_EQ(storage_.records[Failed][0]["retries"], json(GetParam().retriesLeft));
  EXPECT_EQ(state_.dialAttempt, 1u);
  EXPECT_EQ(storage_.loads.empty(), GetParam().timings.empty());
}
INSTANTIATE_ROWS(Schedule, scheduleRows);

TEST_F(RetryStep, SharesTheAttemptAmongTheMessagesThatMayRetry) {
  for (const char* const record :
       {"{'guid':'1','recipient':'bad','retries':2}", "{'guid':'2','recipient':'good','retries':1}",
        "{'guid':'3','recipient':'spent','retries':0}", "{'guid':'4','recipient':'never'}", "[1]"})
    storage_.records[Failed].push_back(json(record));
  storage_.records[Failed][2]["retries"] = 0u;  // as a last failed retry leaves it
  EXPECT_THAT(attemptTimes({10}, 10), ElementsAre(10));
  EXPECT_THAT(provider_.attempts, ElementsAre("bad", "good"));
  EXPECT_THAT(storage_.guids(Sent), ElementsAre("2"));
  EXPECT_THAT(storage_.guids(Failed), ElementsAre("3", "4", "", "1"));  // refiled, so at the end
  EXPECT_EQ(storage_.records[Failed].back(), json("{'guid':'1','recipient':'bad','retries':1}"));
}

TEST_F(RetryStep, StartsAnewWhenNothingIsLeft) {
  storage_.save(json("{'guid':'1','recipient':'bad','retries':9}"), Failed);
  attemptTimes({10, 100}, 30);
  EXPECT_EQ(state_.dialAttempt, 2u);
  EXPECT_EQ(state_.time_not_attempting, 20u);
  storage_.remove(Json::nullValue, Failed);
  step({10, 100});
  EXPECT_FALSE(state_.timerStarted);
  EXPECT_THAT((std::vector<std::uint32_t>{state_.lastTime, state_.time_not_attempting, state_.dialAttempt}),
              ElementsAre(0, 0, 1));
  storage_.save(json("{'guid':'2','recipient':'bad','retries':9}"), Failed);
  EXPECT_THAT(attemptTimes({10, 100}, 30), ElementsAre(10));
}

TEST_F(RetryStep, CountsTheTimeOfAnAttemptForTheNext) {
  storage_.save(json("{'guid':'1','recipient':'bad','retries':9}"), Failed);
  provider_.onSend = [this] { now_ += 5; };
  EXPECT_THAT(attemptTimes({10}, 30), ElementsAre(15, 25, 35));  // the seconds after each
}

TEST_F(RetryStep, TakesAClockThatFailsFor0) {
  LogCapture log;
  clockFails = true;
  const std::uint32_t failed = monotonicSeconds();
  clockFails = false;
  EXPECT_EQ(failed, 0u);
  EXPECT_EQ(log.text(), "[ERROR] VELD: Error getting time\n");
  EXPECT_NE(monotonicSeconds(), 0u);
}
