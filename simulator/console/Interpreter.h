#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "simulator/console/CommandLine.h"
#include "simulator/gateway/Gateway.h"

namespace Simulator {

/// One command: how it is written, what it does, and how it is done.
struct Command {
  const char* name;
  const char* arguments;  ///< as help shows them; words in it that stand for themselves are completed
  const char* summary;
  /// May answer misuse().
  Answer (*run)(Gateway& gateway, CommandLine& line);
};

/// The answer to a command that was not written as its arguments say; the user is shown how.
inline Answer misuse() { return {false, ""}; }

// By theme, each in a file of its own.
const std::vector<Command>& messageCommands();
const std::vector<Command>& faultCommands();
const std::vector<Command>& daemonCommands();
const std::vector<Command>& lookCommands();

/// Executes command lines on a gateway. The console and the page may use it at the same time: one command is
/// executed after the other.
class Interpreter {
 public:
  explicit Interpreter(Gateway& gateway);

  /// Executes a line; a blank one does nothing. The text of the answer ends without a line feed.
  Answer execute(const std::string& line);

  /// The gateway does what its API was asked for since the last call, if anything.
  void carryOut();
  /// What it has done so, a line each, from number `first` on, counting from 0.
  std::vector<std::string> carriedOut(std::size_t first = 0);

  /// Keeps the other threads' commands back for as long as the caller holds it; not held when one is being
  /// executed just now.
  using Turn = std::unique_lock<std::recursive_mutex>;
  Turn tryTurn() { return Turn(turn_, std::try_to_lock); }

  const std::vector<Command>& all() const { return commands_; }
  Gateway& gateway() { return gateway_; }

 private:
  Answer help(const CommandLine& line) const;
  const Command* find(const std::string& name) const;

  Gateway& gateway_;
  std::recursive_mutex turn_;
  std::vector<Command> commands_;
  std::vector<std::string> carriedOut_;
};

}  // namespace Simulator
