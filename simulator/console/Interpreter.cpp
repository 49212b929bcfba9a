#include "simulator/console/Interpreter.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace Simulator {
namespace {

constexpr std::size_t moreMade = 3;  // letters of a wrong name that say which command was meant

std::string usage(const Command& command) {
  return std::string(command.name) + (*command.arguments == '\0' ? "" : " ") + command.arguments;
}

bool sameLetters(const std::string& one, std::string other) {
  std::string sorted = one;
  std::sort(sorted.begin(), sorted.end());
  std::sort(other.begin(), other.end());
  return sorted == other;
}

}  // namespace

Interpreter::Interpreter(Gateway& gateway) : gateway_(gateway) {
  for (const auto* some : {&messageCommands(), &daemonCommands(), &faultCommands(), &lookCommands()}) {
    commands_.insert(commands_.end(), some->begin(), some->end());
  }
}

const Command* Interpreter::find(const std::string& name) const {
  const auto found = std::find_if(commands_.begin(), commands_.end(),
                                  [&](const Command& command) { return command.name == name; });
  return found == commands_.end() ? nullptr : &*found;
}

Answer Interpreter::execute(const std::string& text) {
  const Turn turn(turn_);
  CommandLine line;
  if (!line.read(text)) return wrong("A quote is left open: close it with another one.");
  if (line.name().empty()) return {};
  if (line.name() == "help") return help(line);
  const Command* command = find(line.name());
  if (command == nullptr) {
    for (const Command& other : commands_) {
      const bool begins = line.name().compare(0, moreMade, other.name,
                                              std::min(moreMade, std::string(other.name).size())) == 0;
      if (begins || sameLetters(line.name(), other.name)) {
        return wrong("There is no command \"" + line.name() + "\"; did you mean: " + usage(other));
      }
    }
    return wrong("There is no command \"" + line.name() + "\"; \"help\" lists them.");
  }
  Answer answer = command->run(gateway_, line);
  if (!answer.good && answer.text.empty()) answer.text = "Write it as: " + usage(*command);
  while (!answer.text.empty() && answer.text.back() == '\n') answer.text.pop_back();
  return answer;
}

void Interpreter::carryOut() {
  const Turn turn(turn_);
  std::istringstream done(gateway_.carryOut());
  for (std::string line; std::getline(done, line);) carriedOut_.push_back(line);
}

std::vector<std::string> Interpreter::carriedOut(std::size_t first) {
  const Turn turn(turn_);
  if (first >= carriedOut_.size()) return {};
  return {carriedOut_.begin() + static_cast<std::ptrdiff_t>(first), carriedOut_.end()};
}

Answer Interpreter::help(const CommandLine& line) const {
  if (line.words().empty()) {
    std::string text;
    for (const Command& command : commands_) {
      char row[160];
      std::snprintf(row, sizeof row, "%-10s %s\n", command.name, command.summary);
      text += row;
    }
    return {true, text + "help NAME says how a command is written."};
  }
  const Command* command = find(line.words().front());
  if (command == nullptr) return wrong("There is no command \"" + line.words().front() + "\".");
  return {true, usage(*command) + "\n" + command->summary};
}

}  // namespace Simulator
