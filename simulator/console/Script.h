#pragma once

#include <istream>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Runs commands and checks from a text, one per line. A line that begins with "#" is a comment. "help" lists
/// the checks. Each of them, except expect-exit, examines the output of the last command.
class Script {
 public:
  /// Error messages call this script `name`. With `echo` each line is printed before its output.
  Script(Interpreter& interpreter, std::string name, bool echo);

  /// Runs the lines. Stops at the first that fails, prints the reason and returns false. At the end, waits
  /// for the program of --with and stops the daemon, which must end with status 0 or that of the last
  /// expect-exit.
  [[nodiscard]] bool run(std::istream& text);

 private:
  struct Check;
  friend std::vector<Command> checkCommands();
  static const Check checks[];

  void execute(const std::string& line);
  bool outputHas(const std::string& text) const;
  bool takeRefusal();
  bool daemonEnds(const std::string& status);
  bool stopDaemon();
  bool fail() const;

  Interpreter& interpreter_;
  const std::string name_;
  const bool echo_;
  unsigned read_ = 0;    ///< the number of lines read so far
  unsigned number_ = 0;  ///< of line_, the last command or check
  std::string line_;
  Answer last_;
  std::string expectedEnding_ = "0";
};

}  // namespace Simulator
