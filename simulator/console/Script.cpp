#include "simulator/console/Script.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace Simulator {
namespace {
constexpr char blanks[] = " \t\r";
constexpr double exitSeconds = 10;
constexpr char expectWrong[] = "expect-wrong";

std::string trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// Returns the number of lines in `text`, which ends without a line feed.
std::ptrdiff_t countLines(const std::string& text) {
  return text.empty() ? 0 : std::count(text.begin(), text.end(), '\n') + 1;
}

Answer refuseCheck(Gateway&, const Arguments&) { return wrong("Only a script can use a check."); }
}  // namespace

struct Script::Check {
  const char *name, *arguments, *summary;
  bool (*holds)(Script& script, const std::string& wanted);
};
const Script::Check Script::checks[] = {
    {"expect", "TEXT...", "in a script: the last output must contain TEXT, which is the rest of the line",
     [](Script& script, const std::string& text) { return script.outputHas(text); }},
    {"expect-not", "TEXT...", "in a script: the last output must not contain TEXT",
     [](Script& script, const std::string& text) { return !script.outputHas(text); }},
    {"expect-count", "N", "in a script: the last output must have N lines",
     [](Script& script, const std::string& count) {
       return std::to_string(countLines(script.last_.text)) == count;
     }},
    {"expect-exit", "STATUS",
     "in a script: the daemon must end within 10 s with STATUS, such as \"0\", \"1\" or \"signal 9\"",
     [](Script& script, const std::string& status) { return script.daemonEnds(status); }},
    {expectWrong, "TEXT...",
     "in a script: the last command must have failed with an error that contains TEXT",
     [](Script& script, const std::string& text) { return script.takeFailure() && script.outputHas(text); }},
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
    if (!last_.good && name != expectWrong) return fail();
    line_ = line;
    number_ = read_;
    const auto* const check = std::find_if(std::begin(checks), std::end(checks),
                                           [&name](const Check& one) { return one.name == name; });
    const std::string wanted = trimmed(line.substr(name.size()));
    if (check == std::end(checks))
      execute(line);
    else if (wanted.empty() || !check->holds(*this, wanted))
      return fail();
  }
  if (!last_.good) return fail();
  if (interpreter_.gateway().program.running()) interpreter_.execute("await program");
  return stopDaemon() || fail();
}

void Script::execute(const std::string& line) {
  last_ = interpreter_.execute(line);
  if (last_.good && !last_.text.empty()) std::cout << last_.text << std::endl;
}

bool Script::fail() const {
  std::cerr << name_ << ":" << number_ << ": " << line_
            << "\n  got: " << (last_.text.empty() ? "nothing" : last_.text) << std::endl;
  return false;
}

bool Script::outputHas(const std::string& text) const { return last_.text.find(text) != std::string::npos; }

// Returns true if the last command failed. The script can then continue.
bool Script::takeFailure() { return !std::exchange(last_.good, true); }

bool Script::daemonEnds(const std::string& status) {
  const auto turn = interpreter_.lock();
  DaemonProcess& daemon = interpreter_.gateway().daemon;
  const bool ended = daemon.wait(exitSeconds, [&daemon] { return !daemon.running(); });
  last_.text = ended ? "status " + daemon.ending() : "the daemon still runs";
  expectedEnding_ = daemon.ending();
  return ended && expectedEnding_ == status;
}

bool Script::stopDaemon() {
  const auto turn = interpreter_.lock();
  DaemonProcess& daemon = interpreter_.gateway().daemon;
  if (daemon.running()) {
    expectedEnding_ = "0";
    daemon.stop();
  }
  line_ = "the end: the daemon must end with status " + expectedEnding_;
  const std::string ending = daemon.ending();
  last_.text = daemon.running() ? "the daemon still runs" : "status " + ending;
  return !daemon.running() && (ending.empty() || ending == expectedEnding_);
}
}  // namespace Simulator
