// Tests the log lines at TRACE and DEBUG. This program is built with a logger that prints every level.

#include <gtest/gtest.h>

#include "commands/SMSCommandExecutor.h"
#include "daemon/LocalApi.h"
#include "daemon/RetryStep.h"
#include "tests/CannedApi.h"
#include "tests/LogCapture.h"
#include "tests/daemon/World.h"

using namespace MessageStatus;

TEST(Trace, LogsTimeNotAttemptingBeforeItsUpdate) {
  World world;
  const Spool::Pass pass = world.inTransit.spool.open();
  world.put("{'guid':'1','recipient':'good','retries':1}", Failed);
  RetryState state;
  std::uint32_t now = 100;
  LogCapture log;
  for (; now <= 106; now += 3) {
    Outbox outbox(world.provider, world.storage, world.inTransit);
    retryFailedMessages(outbox, world.storage, {6, 60}, state, [&] { return now; });
  }
  EXPECT_EQ(log.text(),
            "[DEBUG] VELD: time_not_attempting=[0], current_timing=[6]\n"
            "[DEBUG] VELD: time_not_attempting=[0], current_timing=[6]\n"
            "[DEBUG] VELD: Failed sms has not redialed in 3 seconds.  Dial attempt: 1\n"
            "[DEBUG] VELD: time_not_attempting=[3], current_timing=[6]\n"
            "[DEBUG] VELD: Try to send failed sms.\n");
}

TEST(Trace, LogsRequestsToTheLocalApi) {
  const std::string answer = CannedApi::ok("{\"code\": 200}");
  LogCapture log;
  {
    const CannedApi api(answer);
    Json::Value result;
    EXPECT_TRUE(loadFromApi("http://localhost/api/sms", result));
  }
  const CannedApi api(answer);
  SMSCommandExecutor("http://localhost/x").execute("1", std::vector<std::string>{"a"});
  EXPECT_EQ(log.text(),
            "[TRACE] loadFromApi\n[TRACE] curlWriter\n"
            "[DEBUG] [CMDCTRLR] execute args:{\"recipients\": [\"1\"], \"args\": [\"a\"]}\n"
            "[INFO] SMSCommandExecutor sending [http://localhost/x] command to [1] with args:\n"
            "[INFO]              a\n"
            "[INFO] SMSCommandExecutor::execute postFields = {\"recipients\": [\"1\"], \"args\": [\"a\"]}\n");
}
