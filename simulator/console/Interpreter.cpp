#include "simulator/console/Interpreter.h"

#include <algorithm>

namespace Simulator {
namespace {

constexpr std::size_t moreMade = 3;  // letters of a wrong name that say which command was meant
constexpr std::size_t nameWidth = 11;
constexpr double turnSeconds = 30;

std::string usage(const Command& command) {
  return std::string(command.name) + (*command.arguments == '\0' ? "" : " ") + command.arguments;
}

}  // namespace

Interpreter::Interpreter(Gateway& gateway) : gateway_(gateway) {
  for (const auto& some : {messageCommands(), daemonCommands(), faultCommands(), lookCommands()})
    commands_.insert(commands_.end(), some.begin(), some.end());
  gateway_.daemon.pause = [this] { pause(); };
}

Interpreter::~Interpreter() { gateway_.daemon.pause = sleepAMoment; }

void Interpreter::pause() {
  turn_.unlock();
  sleepAMoment();
  turn_.lock();
}

const Command* Interpreter::find(const std::string& name) const {
  const auto found = std::find_if(commands_.begin(), commands_.end(),
                                  [&](const Command& command) { return command.name == name; });
  return found == commands_.end() ? nullptr : &*found;
}

Answer Interpreter::execute(const std::string& text) {
  std::vector<Word> line;
  if (!splitLine(text, line)) return wrong("A quote is left open: close it with another one.");
  if (line.empty()) return {};
  const std::string& name = line[0].text;
  if (name == "help") return help(line.size() > 1 ? line[1].text : "");
  if (const Command* command = find(name)) return run(*command, line);
  for (const Command& other : commands_) {
    const std::string meant = other.name;
    if (name.compare(0, moreMade, meant.substr(0, moreMade)) == 0 ||
        std::is_permutation(name.begin(), name.end(), meant.begin(), meant.end()))
      return wrong("There is no command \"" + name + "\"; did you mean: " + usage(other));
  }
  return wrong("There is no command \"" + name + "\"; \"help\" lists them.");
}

Answer Interpreter::run(const Command& command, const std::vector<Word>& line) {
  Arguments given;
  const std::string problem = given.read(command.arguments, line);
  if (!problem.empty()) return wrong(problem + " Write it as: " + usage(command));
  const auto turn = lock();
  if (command.waits) {
    std::string hang;
    const auto isFree = [&] { return !busy() || !(hang = gateway_.hang()).empty(); };
    if (!waitUntil(turnSeconds, isFree, [this] { pause(); }) || !hang.empty())
      return wrong("\"" + waiting_ + "\" has not ended yet" + (hang.empty() ? "" : ": " + hang) + ".");
    waiting_ = command.name;
    gateway_.daemon.interrupted = false;
  }
  Answer answer = command.run(gateway_, given);
  if (command.waits) waiting_.clear();
  while (!answer.text.empty() && answer.text.back() == '\n') answer.text.pop_back();
  return answer;
}

void Interpreter::carryOut() {
  const auto turn = lock();
  if (busy()) return;
  waiting_ = "carry-out";
  gateway_.daemon.interrupted = false;
  gateway_.responder.carryOut();
  waiting_.clear();
}

Answer Interpreter::help(const std::string& name) const {
  if (const Command* command = find(name)) return {true, usage(*command) + "\n" + command->summary};
  if (!name.empty()) return wrong("There is no command \"" + name + "\".");
  std::string text;
  for (const Command& command : commands_) {
    const std::string padded = std::string(command.name) + std::string(nameWidth, ' ');
    text += padded.substr(0, nameWidth) + command.summary + "\n";
  }
  return {true, text + "help NAME says how a command is written."};
}

}  // namespace Simulator
