#include "standalone/api/CommandProcess.h"
#include "tests/Rows.h"

using namespace Standalone;

struct ProcessRow {
  const char* name;
  std::vector<std::string> words;
  bool succeeded;
  std::string output;
};
const ProcessRow processRows[] = {
    {"Output", {"/bin/sh", "-c", "echo out; echo err >&2"}, true, "out\n"},
    {"Failure", {"/bin/sh", "-c", "echo out; exit 3"}, false, "out\n"},
    {"Signal", {"/bin/sh", "-c", "kill -9 $$"}, false, ""},
    {"NoProgram", {"/nothing/here"}, false, ""},
    {"Input", {"/bin/cat"}, true, "given"},
    {"ArgumentsAreNotExpanded", {"/usr/bin/printf", "%s|", "a b", "", "$(id)", "-e"}, true, "a b||$(id)|-e|"},
    {"Environment", {"/usr/bin/env"}, true, "A=1\n"},
    {"WorkingDirectory", {"/bin/pwd"}, true, "/\n"},
    {"LeadsAProcessGroup", {"/bin/sh", "-c", "[ $(ps -o pgid= $$) = $$ ] && echo yes"}, true, "yes\n"},
    {"OutputOfTheSizeOfAPipe", {"/usr/bin/head", "-c", "60000", "/dev/zero"}, true, std::string(60000, '\0')},
    {"LongOutput", {"/bin/sh", "-c", "/usr/bin/yes | /usr/bin/head -c 999999"}, true, times(32768, "y\n")},
    {"GrandchildKeepsTheOutputOpen", {"/bin/sh", "-c", "sleep 1000 & echo out"}, true, "out\n"},
};
TEST_ROWS(Process, IsRun, processRows) {
  const Ending ending = runCommand(GetParam().words, {"A=1"}, "given", 60);
  EXPECT_EQ(ending.succeeded, GetParam().succeeded);
  EXPECT_EQ(ending.output, GetParam().output);
  EXPECT_FALSE(ending.timedOut);
}

TEST(Process, IsKilledWithItsGroupAtTheTimeOut) {
  const Ending ending = runCommand({"/bin/sh", "-c", "sleep 1001 & echo $!; sleep 1001"}, {}, "", 1);
  EXPECT_TRUE(ending.timedOut);
  EXPECT_FALSE(ending.succeeded);
  const Ending wait = runCommand({"/bin/sh", "-c", "while pgrep -f '^sleep 1001'; do :; done"}, {}, "", 60);
  EXPECT_TRUE(wait.succeeded) << "the process still runs after a minute";
}
