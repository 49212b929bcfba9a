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

// Of a text that ends without a line feed.
std::ptrdiff_t countLines(const std::string& text) {
  return text.empty() ? 0 : std::count(text.begin(), text.end(), '\n') + 1;
}

}  // namespace

Script::Script(Interpreter& interpreter, std::string name, bool echo)
    : interpreter_(interpreter), name_(std::move(name)), echo_(echo) {}

bool Script::run(std::istream& text) {
  for (std::string line; std::getline(text, line);) {
    ++read_;
    line = trimmed(line);
    if (echo_ && !line.empty()) std::cout << (line[0] == '#' ? "\n" : "> ") << line << std::endl;
    if (line.empty() || line[0] == '#') continue;
    const bool isCheck = line.compare(0, 6, "expect") == 0;
    if (!settleLast(isCheck && line.compare(0, 12, "expect-wrong") == 0)) return false;
    line_ = line;
    number_ = read_;
    if (isCheck && !check(line)) return false;
    if (!isCheck && line != "quit") execute(line);
  }
  return settleLast(false) && stopDaemon();
}

// A refused command fails unless the next line expects it; only then is its line known to be the bad one.
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

bool Script::check(const std::string& line) {
  const std::size_t blank = line.find_first_of(blanks);
  const std::string what = line.substr(0, blank);
  const std::string wanted = blank == std::string::npos ? "" : trimmed(line.substr(blank));
  if (wanted.empty()) return fail("a word after " + what, "none");
  const bool holds = last_.text.find(wanted) != std::string::npos;
  if (what == "expect") return holds || fail(wanted, last_.text);
  if (what == "expect-not") return !holds || fail("no " + wanted, last_.text);
  if (what == "expect-count") {
    const std::string count = std::to_string(countLines(last_.text));
    return count == wanted || fail(wanted + " lines", count + "\n" + last_.text);
  }
  if (what == "expect-exit") {
    const auto turn = interpreter_.lock();
    DaemonProcess& daemon = interpreter_.gateway().daemon;
    const bool ended = daemon.wait(exitSeconds, [&daemon] { return !daemon.running(); });
    const std::string ending = ended ? daemon.ending() : "it still runs";
    expectedEnding_ = ending;
    return ending == wanted || fail("the daemon ends with status " + wanted, ending);
  }
  if (what == "expect-wrong") {
    const bool refused = !last_.good;
    last_.good = true;
    return (refused && holds) || fail("a refusal with " + wanted, last_.text);
  }
  return fail("expect, expect-not, expect-count, expect-exit or expect-wrong", what);
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
