#include "simulator/console/Interpreter.h"

#include <algorithm>

namespace Simulator {
namespace {
constexpr std::size_t sameLetters = 3;  // a command with so many equal first letters is suggested
constexpr std::size_t nameWidth = 14;
constexpr double turnSeconds = 30;
constexpr char helpEnd[] =
    "\"help NAME\" shows the syntax of a command. In the console and on the page, the clock runs.\n"
    "In a script, the clock stands still, and passes run only in start, restart, pass, wait, await exit\n"
    "and await program.";

std::string usage(const Command& command) {
  return std::string(command.name) + (*command.arguments == '\0' ? "" : " ") + command.arguments;
}

// Returns true if `name` may be a misspelling of the command `meant`.
bool isLike(const std::string& name, const std::string& meant) {
  return name.compare(0, sameLetters, meant.substr(0, sameLetters)) == 0 ||
         std::is_permutation(name.begin(), name.end(), meant.begin(), meant.end());
}
}  // namespace

Interpreter::Interpreter(Gateway& gateway) : gateway_(gateway) {
  for (const auto& some :
       {messageCommands(), daemonCommands(), faultCommands(), showCommands(), checkCommands()})
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
  if (!splitLine(text, line)) return wrong("A quote is not closed.");
  if (line.empty()) return {};
  const std::string& name = line[0].text;
  if (name == "help") return help(line.size() > 1 ? line[1].text : "");
  const Command* const command = find(name);
  return command != nullptr ? run(*command, line) : unknown(name);
}

Answer Interpreter::unknown(const std::string& name) const {
  const std::string problem = "There is no command \"" + name + "\"; ";
  for (const Command& other : commands_)
    if (isLike(name, other.name)) return wrong(problem + "did you mean: " + usage(other));
  return wrong(problem + "\"help\" lists all commands.");
}

Answer Interpreter::run(const Command& command, const std::vector<Word>& line) {
  Arguments given;
  const std::string problem = given.read(command.arguments, line);
  if (!problem.empty()) return wrong(problem + " Usage: " + usage(command));
  const auto turn = lock();
  Answer refusal = command.waits ? takeTurn(command) : Answer{};
  if (!refusal.good) return refusal;
  Answer answer = command.run(gateway_, given);
  if (command.waits) waiting_.clear();
  while (!answer.text.empty() && answer.text.back() == '\n') answer.text.pop_back();
  return answer;
}

// Waits until no other command waits for the daemon. Returns an error if the other command does not end.
Answer Interpreter::takeTurn(const Command& command) {
  std::string hang;
  const auto decided = [&] {
    hang = busy() ? gateway_.hang() : "";
    return !busy() || !hang.empty();
  };
  const bool inTime = waitUntil(turnSeconds, decided, [this] { pause(); });
  if (!hang.empty()) return wrong(waiting_ + " has not ended: " + hang + ".");
  if (!inTime) return wrong(waiting_ + " has not ended.");
  waiting_ = std::string("\"").append(command.name) + "\"";
  gateway_.daemon.interrupted = false;
  return {};
}

void Interpreter::carryOut() {
  const auto turn = lock();
  if (busy()) return;
  waiting_ = "A command of the API";
  gateway_.daemon.interrupted = false;
  gateway_.responder.carryOut();
  waiting_.clear();
}

Answer Interpreter::help(const std::string& name) const {
  if (const Command* command = find(name)) return {true, usage(*command) + "\n" + command->summary};
  if (!name.empty()) return unknown(name);
  std::string text;
  for (const Command& command : commands_) {
    const std::string padded = std::string(command.name) + std::string(nameWidth, ' ');
    text += padded.substr(0, nameWidth) + command.summary + "\n";
  }
  return {true, text + helpEnd};
}
}  // namespace Simulator
