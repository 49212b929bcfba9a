#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "simulator/console/Arguments.h"
#include "simulator/gateway/Gateway.h"

namespace Simulator {

/// What a command answers: its output, or in one line what was wrong and what would be right.
struct Answer {
  bool good = true;
  std::string text;
};
inline Answer wrong(const std::string& text) { return {false, text}; }

/// One command: how it is written, what it does, and how it is done.
struct Command {
  const char* name;
  const char* arguments;  ///< the shapes in which it may be written (Arguments)
  const char* summary;
  Answer (*run)(Gateway& gateway, const Arguments& given);
  bool waits = false;  ///< lets time pass, and others look and act meanwhile; one at a time
};

// By theme, each in a file of its own.
std::vector<Command> messageCommands();
std::vector<Command> faultCommands();
std::vector<Command> daemonCommands();
std::vector<Command> lookCommands();

/// Executes command lines on a gateway. The console and the page may use it at the same time: one after the
/// other, but a command that waits for the daemon keeps nobody else waiting.
class Interpreter {
 public:
  explicit Interpreter(Gateway& gateway);
  ~Interpreter();

  /// Executes a line; a blank one does nothing. The text of the answer ends without a line feed.
  Answer execute(const std::string& line);

  /// The gateway does what its API was asked for, unless a command waits just now.
  void carryOut();

  const std::vector<Command>& all() const { return commands_; }

  /// Who uses gateway() or busy() beside another thread holds this as long.
  std::unique_lock<std::mutex> lock() { return std::unique_lock(turn_); }
  Gateway& gateway() { return gateway_; }
  /// Whether a command waits.
  bool busy() const { return !waiting_.empty(); }

 private:
  Answer run(const Command& command, const std::vector<Word>& line);
  Answer help(const std::string& name) const;
  const Command* find(const std::string& name) const;
  void pause();

  Gateway& gateway_;
  std::mutex turn_;
  std::vector<Command> commands_;
  std::string waiting_;  ///< the command that waits
};

}  // namespace Simulator
