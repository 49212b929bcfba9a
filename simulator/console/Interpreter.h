#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "simulator/console/Arguments.h"
#include "simulator/gateway/Gateway.h"

namespace Simulator {

/// The answer to a command: its output, or one line that says what is wrong and how to write it.
struct Answer {
  bool good = true;
  std::string text;
};
inline Answer wrong(const std::string& text) { return {false, text}; }

struct Command {
  const char* name;
  const char* arguments;  ///< their shapes, see Arguments
  const char* summary;
  Answer (*run)(Gateway& gateway, const Arguments& given);
  bool waits = false;  ///< releases the lock while it waits; only one such command runs at a time
};

// The groups of commands, each in a file of its own.
std::vector<Command> messageCommands();
std::vector<Command> faultCommands();
std::vector<Command> daemonCommands();
std::vector<Command> showCommands();
std::vector<Command> checkCommands();

/// Executes command lines on a gateway. The console and the page may use it at the same time. Their commands
/// run one after the other, but a command that waits for the daemon does not delay the others.
class Interpreter {
 public:
  explicit Interpreter(Gateway& gateway);
  ~Interpreter();

  /// Executes a line. A blank line does nothing. The text of the answer ends without a line feed.
  Answer execute(const std::string& line);

  /// Lets the gateway carry out the commands that its API accepted, unless a command waits.
  void carryOut();

  const std::vector<Command>& all() const { return commands_; }

  /// A thread must hold this lock while it uses gateway() or busy(), if there is another thread.
  std::unique_lock<std::mutex> lock() { return std::unique_lock(turn_); }
  Gateway& gateway() { return gateway_; }
  bool busy() const { return !waiting_.empty(); }  ///< a command waits

 private:
  Answer run(const Command& command, const std::vector<Word>& line);
  Answer takeTurn(const Command& command);
  Answer unknown(const std::string& name) const;
  Answer help(const std::string& name) const;
  const Command* find(const std::string& name) const;
  void pause();

  Gateway& gateway_;
  std::mutex turn_;
  std::vector<Command> commands_;
  std::string waiting_;  ///< names the command that waits; empty if none does
};

}  // namespace Simulator
