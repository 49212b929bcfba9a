#pragma once

#include <istream>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Runs commands and checks from a text, one per line. A line that begins with "#" is a comment. "help" lists
/// the checks. All but expect-exit look at the output of the last command.
class Script {
 public:
  /// Error messages call this script `name`. With `echo` each line is printed before its output.
  Script(Interpreter& interpreter, std::string name, bool echo);

  /// Stops at the first line that fails, with its reason on standard error, and returns false. After the last
  /// line it waits for the program beside the daemon and stops the daemon. The daemon must end with status 0,
  /// or with the one of the last expect-exit.
  [[nodiscard]] bool run(std::istream& text);

 private:
  struct Check;
  friend std::vector<Command> checkCommands();
  static const Check checks[];

  void execute(const std::string& line);
  bool outputHas(const std::string& text) const;
  bool daemonEnds(const std::string& status);
  bool stopDaemon();
  bool fail() const;

  Interpreter& interpreter_;
  const std::string name_;
  const bool echo_;
  unsigned read_ = 0;
  unsigned number_ = 0;  ///< of line_, the last command or check
  std::string line_;
  Answer last_;
  std::string expectedEnding_ = "0";
};

}  // namespace Simulator
