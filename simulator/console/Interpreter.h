#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "simulator/console/Arguments.h"
#include "simulator/gateway/Gateway.h"

namespace Simulator {
/// The answer to a command: the output if `good` is true, otherwise an error message.
struct Answer {
  bool good = true;
  std::string text;
};
inline Answer wrong(const std::string& text) { return {false, text}; }

struct Command {
  const char* name;
  const char* arguments;  ///< the syntax of the arguments, see Arguments
  const char* summary;
  Answer (*run)(Gateway& gateway, const Arguments& given);
  bool waits = false;  ///< true: waits for the daemon; meanwhile, commands that do not wait can run
};

// Each of these functions returns a group of commands.
std::vector<Command> messageCommands();
std::vector<Command> faultCommands();
std::vector<Command> daemonCommands();
std::vector<Command> showCommands();
std::vector<Command> checkCommands();

/// Executes command lines on a gateway. The console and the page may use an object at the same time. Their
/// commands run one after the other. While a command waits for the daemon, commands that do not wait can run.
class Interpreter {
 public:
  explicit Interpreter(Gateway& gateway);
  ~Interpreter();

  /// Executes a line. A blank line does nothing. The text of the answer ends without a line feed.
  Answer execute(const std::string& line);

  /// Lets the gateway carry out the commands that its API accepted. Does nothing while busy().
  void carryOut();

  const std::vector<Command>& all() const { return commands_; }

  /// If there are several threads, a thread must hold this lock while it uses gateway() or busy().
  std::unique_lock<std::mutex> lock() { return std::unique_lock(turn_); }
  Gateway& gateway() { return gateway_; }
  bool busy() const { return !waiting_.empty(); }  ///< returns true if a command is waiting

 private:
  Answer run(const Command& command, const std::vector<Word>& line);
  Answer takeTurn(const Command& command);
  Answer unknown(const std::string& name) const;
  Answer help(const std::string& name) const;
  const Command* find(const std::string& name) const;
  void pause();  ///< releases the lock for a moment

  Gateway& gateway_;
  std::mutex turn_;
  std::vector<Command> commands_;
  std::string waiting_;  ///< the name of the command that is waiting; empty if no command is waiting
};
}  // namespace Simulator
