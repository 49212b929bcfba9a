#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

#include "daemon/RetryStep.h"
#include "tests/Testing.h"
#include "tests/daemon/World.h"

using testing::ElementsAre;
using namespace MessageStatus;

namespace {
bool clockFails = false;
}

// Replaces the function of the C library.
extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
#ifdef SYS_clock_gettime64
  constexpr long call = SYS_clock_gettime64;
#else
  constexpr long call = SYS_clock_gettime;
#endif
  return clockFails && clock == CLOCK_MONOTONIC ? -1 : static_cast<int>(syscall(call, clock, now));
}

namespace {
/// Runs a step every 5 seconds. The clock starts just below its overflow.
class RetryStep : public testing::Test {
 protected:
  RetryStep() { world_.provider.refused = {"bad"}; }

  void step(const std::vector<std::uint32_t>& timings) {
    const Spool::Pass pass = world_.inTransit.spool.open();
    Outbox outbox(world_.provider, world_.storage, world_.inTransit);
    retryFailedMessages(outbox, world_.storage, timings, state_, [this] { return now_; });
  }

  /// The times of the sends, in seconds after the first step.
  std::vector<std::uint32_t> attemptTimes(const std::vector<std::uint32_t>& timings, std::uint32_t seconds) {
    std::vector<std::uint32_t> times;
    const std::uint32_t begin = now_;
    for (; now_ - begin <= seconds; now_ += 5) {
      const std::size_t before = world_.provider.attempts.size();
      step(timings);
      if (world_.provider.attempts.size() > before) times.push_back(now_ - begin);
    }
    return times;
  }

  std::uint32_t now_ = 0xFFFFFFFA;
  World world_;
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
    {"RoundedUpToTheNextPass", {7}, "2", {10, 20}, "0"},
    {"FirstIntervalIs0", {0, 60}, "2", {0, 60}, "0"},
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
  world_.put("{'guid':'1','recipient':'bad','retries':" + std::string(GetParam().retries) + "}", Failed);
  EXPECT_EQ(attemptTimes(GetParam().timings, 1000), GetParam().attempts);
  ASSERT_THAT(world_.names(Failed), ElementsAre("1"));
  EXPECT_EQ(world_.records(Failed)[0]["retries"], json(GetParam().retriesLeft));
  EXPECT_EQ(state_.dialAttempt, 1u);
  EXPECT_EQ(world_.folders->loads.empty(), GetParam().timings.empty());
}
INSTANTIATE_ROWS(Schedule, scheduleRows);

TEST_F(RetryStep, TriesEveryMessageThatMayRetry) {
  for (const char* const record :
       {"{'guid':'1','recipient':'bad','retries':2}", "{'guid':'2','recipient':'good','retries':1}",
        "{'guid':'3','recipient':'spent','retries':0}", "{'guid':'4','recipient':'never'}"})
    world_.put(record, Failed);
  world_.put("[1]", Failed, "5");
  std::vector<std::string> inOrder;
  for (const Json::Value& record : world_.storage.load(Failed))
    if (mayRetry(record)) inOrder.push_back(record["recipient"].asString());
  EXPECT_THAT(attemptTimes({10}, 10), ElementsAre(10));
  EXPECT_THAT(inOrder, testing::UnorderedElementsAre("bad", "good"));
  EXPECT_EQ(world_.provider.attempts, inOrder);
  EXPECT_THAT(world_.records(Sent),
              ElementsAre(json("{'guid':'2','recipient':'good','retries':1,'status':'sent'}")));
  EXPECT_THAT(world_.names(Failed), ElementsAre("1", "3", "4", "5"));
  EXPECT_EQ(world_.records(Failed)[0], json("{'guid':'1','recipient':'bad','retries':1}"));
}

TEST_F(RetryStep, DiscardsNoRecordAtTheLimit) {
  for (std::uint32_t i = 10; i < 10 + World::sentLimit; ++i)
    world_.put("{'guid':'" + std::to_string(i) + "','recipient':'bad','retries':" + (i == 20 ? "1}" : "0}"),
               Failed);
  step({0});
  EXPECT_EQ(world_.provider.attempts.size(), 1u);
  EXPECT_EQ(world_.names(Failed).size(), World::sentLimit);
}

TEST_F(RetryStep, MovesOnlyTheSentRecordOfTwoWithTheSameGuid) {
  world_.put("{'guid':'1','recipient':'good','retries':1}", Failed);
  world_.put("{'guid':'1','recipient':'spent','retries':0}", Failed, "2");
  LogCapture log;
  step({0});
  EXPECT_EQ(log.text(), "");
  EXPECT_EQ(world_.records(Sent)[0]["recipient"], "good");
  EXPECT_THAT(world_.names(Failed), ElementsAre("2"));
}

TEST_F(RetryStep, DoesNotCountAnAttemptThatThrows) {
  world_.put("{'guid':'1','recipient':'bad','retries':9}", Failed);
  world_.provider.onSend = [] { throw std::string(); };
  now_ = 100;
  startFailureTimer(state_, [] { return 90; });
  EXPECT_THROW(step({10, 60}), std::string);
  EXPECT_EQ(state_.dialAttempt, 1u);
  EXPECT_EQ(state_.time_not_attempting, 10u);
}

TEST(MayRetry, IsFalseForAnUnsigned0) {
  Json::Value record = json("{'retries':1}");
  EXPECT_TRUE(mayRetry(record));
  record["retries"] = 0u;
  EXPECT_FALSE(mayRetry(record));
}

TEST_F(RetryStep, RestartsTheScheduleWhenNoMessageMayRetry) {
  world_.put("{'guid':'1','recipient':'bad','retries':9}", Failed);
  attemptTimes({10, 100}, 30);
  EXPECT_EQ(state_.dialAttempt, 2u);
  EXPECT_EQ(state_.time_not_attempting, 20u);
  world_.storage.remove(Json::nullValue, Failed);
  step({10, 100});
  EXPECT_FALSE(state_.timerStarted);
  EXPECT_THAT((std::vector<std::uint32_t>{state_.lastTime, state_.time_not_attempting, state_.dialAttempt}),
              ElementsAre(0, 0, 1));
  world_.put("{'guid':'2','recipient':'bad','retries':9}", Failed);
  EXPECT_THAT(attemptTimes({10, 100}, 30), ElementsAre(10));
}

TEST_F(RetryStep, AddsTheTimeOfAnAttemptToTheNextInterval) {
  world_.put("{'guid':'1','recipient':'bad','retries':9}", Failed);
  world_.provider.onSend = [this] { now_ += 5; };
  EXPECT_THAT(attemptTimes({10}, 30), ElementsAre(15, 25, 35));  // an interval includes the send before it
}

TEST_F(RetryStep, ReadsAFailedClockAs0) {
  LogCapture log;
  clockFails = true;
  const std::uint32_t failed = monotonicSeconds();
  clockFails = false;
  EXPECT_EQ(failed, 0u);
  EXPECT_EQ(log.text(), "[ERROR] VELD: Error getting time\n");
  EXPECT_NE(monotonicSeconds(), 0u);
}
