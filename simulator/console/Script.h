#pragma once

#include <istream>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {
/// Runs commands and checks from a text. Each line is a command, a check, or a comment that begins with "#".
/// The check expect-exit examines the daemon. The other checks examine the output of the last command.
class Script {
 public:
  /// `name` names the script in error messages. If `echo` is true, prints each line before its output.
  Script(Interpreter& interpreter, std::string name, bool echo);

  /// Runs the lines, waits for the program of --with, and stops the daemon. The daemon must then end with the
  /// status of the last expect-exit, or with 0 if there was none. If a line fails, or the daemon ends with
  /// another status, prints the reason and returns false at once.
  [[nodiscard]] bool run(std::istream& text);

 private:
  struct Check;
  friend std::vector<Command> checkCommands();
  static const Check checks[];

  void execute(const std::string& line);
  bool outputHas(const std::string& text) const;
  bool takeFailure();
  bool daemonEnds(const std::string& status);
  bool stopDaemon();
  bool fail() const;

  Interpreter& interpreter_;
  const std::string name_;
  const bool echo_;
  unsigned read_ = 0;    ///< how many lines have been read
  unsigned number_ = 0;  ///< the number of `line_`, counted from 1
  std::string line_;     ///< the last command or check
  Answer last_;
  std::string expectedEnding_ = "0";
};
}  // namespace Simulator
