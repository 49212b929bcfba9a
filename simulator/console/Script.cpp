#include "simulator/console/Script.h"

#include <algorithm>
#include <iostream>

namespace Simulator {
namespace {

constexpr char blanks[] = " \t\r";
constexpr double exitSeconds = 10;

std::string trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// `text` ends without a line feed.
std::ptrdiff_t countLines(const std::string& text) {
  return text.empty() ? 0 : std::count(text.begin(), text.end(), '\n') + 1;
}

Answer refuseCheck(Gateway&, const Arguments&) { return wrong("Only a script can check."); }

}  // namespace

struct Script::Check {
  const char* name;
  const char* arguments;
  const char* summary;
  bool (Script::*holds)(const std::string& wanted);
};
const Script::Check Script::checks[] = {
    {"expect", "TEXT...", "in a script: the last output must contain TEXT, the whole rest of the line",
     &Script::expect},
    {"expect-not", "TEXT...", "in a script: the last output must not contain TEXT", &Script::expectNot},
    {"expect-count", "N", "in a script: the last output must have N lines", &Script::expectCount},
    {"expect-exit", "STATUS",
     "in a script: the daemon must end within 10 s, with a status as \"0\", \"1\" or \"signal 9\"",
     &Script::expectExit},
    {"expect-wrong", "TEXT...",
     "in a script: the last command must have been refused, with an error that contains TEXT",
     &Script::expectWrong},
};

std::vector<Command> checkCommands() {
  std::vector<Command> commands;
  for (const Script::Check& check : Script::checks)
    commands.push_back({check.name, check.arguments, check.summary, refuseCheck});
  return commands;
}

Script::Script(Interpreter& interpreter, std::string name, bool echo)
    : interpreter_(interpreter), name_(std::move(name)), echo_(echo) {}

bool Script::run(std::istream& text) {
  for (std::string line; std::getline(text, line);) {
    ++read_;
    line = trimmed(line);
    if (echo_ && !line.empty()) std::cout << (line[0] == '#' ? "\n" : "> ") << line << std::endl;
    if (line.empty() || line[0] == '#') continue;
    const std::string name = line.substr(0, line.find_first_of(blanks));
    const auto* const check = std::find_if(std::begin(checks), std::end(checks),
                                           [&name](const Check& one) { return one.name == name; });
    const bool isCheck = check != std::end(checks);
    if (!settleLast(isCheck && check->holds == &Script::expectWrong)) return false;
    line_ = line;
    number_ = read_;
    if (!isCheck) {
      execute(line);
      continue;
    }
    const std::string wanted = trimmed(line.substr(name.size()));
    if (wanted.empty()) return fail("a word after " + name, "");
    if (!(this->*check->holds)(wanted)) return false;
  }
  if (!settleLast(false)) return false;
  if (interpreter_.gateway().program.running()) interpreter_.execute("await program");
  return stopDaemon();
}

// A refused command fails unless the next line expects the refusal.
bool Script::settleLast(bool wrongIsExpected) {
  if (last_.good || wrongIsExpected) return true;
  std::cerr << name_ << ":" << number_ << ": " << line_ << "\n  " << last_.text << std::endl;
  return false;
}

void Script::execute(const std::string& line) {
  last_ = interpreter_.execute(line);
  if (last_.good && !last_.text.empty()) std::cout << last_.text << std::endl;
}

bool Script::fail(const std::string& expected, const std::string& came) const {
  std::cerr << name_ << ":" << number_ << ": " << line_ << "\n  expected: " << expected
            << "\n  came: " << (came.empty() ? "nothing" : came) << std::endl;
  return false;
}

bool Script::expect(const std::string& text) {
  return last_.text.find(text) != std::string::npos || fail(text, last_.text);
}

bool Script::expectNot(const std::string& text) {
  return last_.text.find(text) == std::string::npos || fail("no " + text, last_.text);
}

bool Script::expectCount(const std::string& count) {
  const std::string came = std::to_string(countLines(last_.text));
  return came == count || fail(count + " lines", came + "\n" + last_.text);
}

bool Script::expectExit(const std::string& status) {
  const auto turn = interpreter_.lock();
  DaemonProcess& daemon = interpreter_.gateway().daemon;
  const bool ended = daemon.wait(exitSeconds, [&daemon] { return !daemon.running(); });
  expectedEnding_ = ended ? daemon.ending() : "it still runs";
  return expectedEnding_ == status || fail("the daemon ends with status " + status, expectedEnding_);
}

bool Script::expectWrong(const std::string& text) {
  const bool refused = !last_.good;
  last_.good = true;
  return (refused && last_.text.find(text) != std::string::npos) ||
         fail("a refusal with " + text, last_.text);
}

bool Script::stopDaemon() {
  const auto turn = interpreter_.lock();
  DaemonProcess& daemon = interpreter_.gateway().daemon;
  line_ = "the end";
  if (daemon.running()) {
    expectedEnding_ = "0";
    if (!daemon.stop()) return fail("the daemon ends on SIGTERM", "it still runs");
  }
  const std::string ending = daemon.ending();
  return ending.empty() || ending == expectedEnding_ ||
         fail("the daemon ends with status " + expectedEnding_, ending);
}

}  // namespace Simulator
