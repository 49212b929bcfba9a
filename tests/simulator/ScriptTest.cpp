#include <filesystem>
#include <iostream>
#include <sstream>

#include "simulator/console/Script.h"
#include "tests/Rows.h"

namespace {
/// Collects the output of a stream while the object exists.
class Printed {
 public:
  explicit Printed(std::ostream& stream) : stream_(stream), before_(stream.rdbuf(text_.rdbuf())) {}
  ~Printed() { stream_.rdbuf(before_); }
  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::ostream& stream_;
  std::streambuf* before_;
};

const std::string build = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();

/// A simulated gateway that runs a script. Its clock stands still between passes.
struct ScriptedGateway {
  Simulator::Gateway gateway{{build + "/daemon/veld", build + "/simulator", true}};
  Simulator::Interpreter interpreter{gateway};

  bool run(const std::string& script, bool echo = false) {
    std::istringstream text(script);
    return Simulator::Script(interpreter, "script", echo).run(text);
  }
};

const Row<const char*, const char*> failingRows[] = {
    {"UnknownCommand", "\nrecieve x y\nstatus", "script:2: recieve x y"},
    {"UnknownCommandInTheLastLine", "recieve x y", "did you mean: receive NUMBER TEXT"},
    {"UnknownCommandWithoutSuggestion", "xyz", "\"help\" lists all commands"},
    {"MissingWord", "queue 1", "TEXT is missing. Usage: queue NUMBER TEXT [--retries N]"},
    {"NotANumber", "fault tool send fail 0", "is not a whole number from 1"},
    {"NotADay", "date 2026-02-30", "\"2026-02-30\" is not a day"},
    {"NotATime", "wait 5x", "\"5x\" is not a time"},
    {"NotASignal", "kill STOP", "\"STOP\" is not KILL, TERM"},
    {"SettingWithoutAValue", "settings enabled", "The value for enabled is missing"},
    {"UnknownSetting", "settings a.b 1", "no setting \"a.b\""},
    {"SettingInARemovedObject", "settings smsCommands --remove\npassword x",
     "no setting \"smsCommands.password.enabled\""},
    {"OpenQuote", "queue 1 \"2", "A quote is not closed"},
    {"PartThatDoesNotExist", "receive 1 2 --hold 2", "The message has 1 part;"},
    {"NotRunning", "pass", "The daemon is not running. \"start\" starts it"},
    {"AfterAKill", "start\nkill\nawait exit\npass", "ended with status signal 9. \"start\" starts it"},
    {"HangingTool", "start\nfault tool read hang\npass",
     "Pass 1 does not end: the tool hangs in \"read\"; \"repair\" ends the hang."},
    {"StopDuringAHang", "start\nfault tool read hang\npass --no-wait\nawait tool\nstop",
     "pass does not end: the tool hangs in \"read\"; \"repair\" ends the hang. \"kill\" kills the daemon."},
    {"SilentApi", "fault api silent\nstart", "The first pass does not end: the API does not answer;"},
    {"Expect", "refuse 1\nfaults\nexpect refused: 2", "script:3: expect refused: 2\n  got: refused: 1"},
    {"ExpectNot", "refuse 1\nfaults\nexpect-not refused", "expect-not refused\n  got: refused: 1"},
    {"ExpectCount", "refuse 1\nfaults\nexpect-count 2", "expect-count 2\n  got: refused: 1"},
    {"ExpectExit", "settings sentLimit --remove\nstart\nexpect-exit 0", "got: status 1"},
    {"ExpectWrong", "faults\nexpect-wrong works", "expect-wrong works\n  got: "},
    {"ExpectWrongWithAnotherError", "bad\nexpect-wrong x", "expect-wrong x\n  got: "},
    {"ExpectWithoutAText", "faults\nexpect", "script:2: expect\n  got: "},
    {"ExpectExitWithAnotherStatus", "start\nkill\nexpect-exit 0", "got: status signal 9"},
    {"KilledWithoutACheck", "start\nkill\nawait exit",
     "the end: the daemon must end with status 0\n  got: status signal 9"},
};
TEST_ROWS(FailingScript, PrintsTheReason, failingRows) {
  ScriptedGateway gateway;
  const Printed output(std::cout);
  const Printed errors(std::cerr);
  EXPECT_FALSE(gateway.run(GetParam().given));
  EXPECT_NE(errors.text().find(GetParam().expected), std::string::npos) << errors.text();
}

TEST(Script, PrintsItsLinesWithEcho) {
  ScriptedGateway gateway;
  const Printed output(std::cout);
  EXPECT_TRUE(gateway.run("refuse 1\n# a comment\nfaults\nbad\nexpect-wrong no command \"bad\"\n", true));
  EXPECT_EQ(output.text(),
            "> refuse 1\nThe modem refuses 1.\n\n# a comment\n> faults\nrefused: 1\n> bad\n"
            "> expect-wrong no command \"bad\"\n");
}

const Row<const char*, const char*> answerRows[] = {
    {"OneMessage", "receive 1 a", "The modem has 1 message from 1."},
    {"ManyMessages", "receive 1 a --times 90", "The modem has 90 messages from 1."},
    {"Parts", "receive 1 abc --parts 3", "The modem has 1 message from 1, in 3 parts."},
    {"ManyInParts", "receive 1 abc --parts 3 --times 2", "The modem has 2 messages from 1, in 3 parts each."},
    {"OnePartHeldBack", "receive 1 ab --parts 2 --hold 2",
     "The modem has 1 message from 1, in 2 parts, 1 part held back until \"release\"."},
    {"TwoPartsLost", "receive 1 abc --parts 3 --lose 1,2",
     "The modem has 1 message from 1, in 3 parts, 2 parts lost."},
    {"OnePartRepeated", "receive 1 ab --parts 2 --repeat 1",
     "The modem has 1 message from 1, in 2 parts, 1 part repeated."},
    {"HelpForACheck", "help expect-count", "expect-count N\nin a script: the last output must have N lines"},
};
TEST_ROWS(ConsoleLine, IsAnswered, answerRows) {
  ScriptedGateway gateway;
  EXPECT_EQ(gateway.interpreter.execute(GetParam().given).text, GetParam().expected);
}
}  // namespace
