#include <gmock/gmock.h>

#include <csignal>

#include "daemon/StartUp.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"

struct CheckRow {
  const char* name;
  const char* settings;
  std::optional<int> status;
  const char* log;
};
const CheckRow checkRows[] = {
    {"Nothing", "{}", 1, "[ERROR] Exit: the sms enabled key has invalid value or it is missing.\n"},
    {"EnabledIsText", "{'enabled':'true'}", 1,
     "[ERROR] Exit: the sms enabled key has invalid value or it is missing.\n"},
    {"OnlyEnabled", "{'enabled':true}", 1,
     "[ERROR] Exit: the sms sent limit key has invalid value or it is missing.\n"},
    {"NoReceivedLimit", "{'enabled':true,'sentLimit':'x'}", 1,
     "[ERROR] Exit: the sms received limit key has invalid value or it is missing.\n"},
    {"NoCommands", "{'enabled':true,'sentLimit':1,'receivedLimit':-1}", 1,
     "[ERROR] Exit: the smsCommands sub-collection is invalid or missing.\n"},
    {"Whole", "{'enabled':true,'sentLimit':1,'receivedLimit':2,'smsCommands':null}", std::nullopt, ""},
};
class Check : public testing::TestWithParam<CheckRow> {};
TEST_P(Check, EndsAtTheFirstFault) {
  LogCapture log;
  EXPECT_EQ(checkSettings(json(GetParam().settings)), GetParam().status);
  EXPECT_EQ(log.text(), GetParam().log);
}
INSTANTIATE_ROWS(Check, checkRows);

TEST(TerminationHandler, IsForSigtermOnlyAndWithoutRestart) {
  ASSERT_TRUE(installTerminationHandler());
  struct sigaction action;
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM, SIGPIPE, SIGCHLD}) {
    sigaction(signal, nullptr, &action);
    EXPECT_EQ(action.sa_handler, SIG_DFL) << signal;
  }
  sigaction(SIGTERM, nullptr, &action);
  EXPECT_EQ(action.sa_handler, onTerminate);
  EXPECT_EQ(action.sa_flags & (SA_RESTART | static_cast<int>(SA_RESETHAND)), 0);
  std::signal(SIGTERM, SIG_DFL);
}
