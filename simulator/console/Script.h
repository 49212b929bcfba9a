#pragma once

#include <istream>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Runs commands and checks from a text, a line each; "#" begins a comment line. The checks look at what the
/// last command put out:
///   expect TEXT        it holds TEXT, the rest of the line as it stands
///   expect-not TEXT    it does not
///   expect-count N     it has N lines
///   expect-exit STATUS the daemon has ended, or does so within ten seconds: "0", "1", "signal 9"
///   expect-wrong TEXT  the command was refused, and the refusal holds TEXT
class Script {
 public:
  /// `name` is how messages name the text. `echo`: each line is printed before its output.
  Script(Interpreter& interpreter, std::string name, bool echo);

  /// False, after a line on standard error, at the first line that fails. A daemon that is left running is
  /// stopped. It is to end with status 0, or as the last expect-exit says.
  [[nodiscard]] bool run(std::istream& text);

 private:
  void execute(const std::string& line);
  bool check(const std::string& line);
  bool fail(const std::string& expected, const std::string& came) const;
  bool settleLast(bool wrongIsExpected);
  bool stopDaemon();

  Interpreter& interpreter_;
  const std::string name_;
  const bool echo_;
  unsigned read_ = 0;
  unsigned number_ = 0;  ///< of line_, the last one that was a command or a check
  std::string line_;
  Answer last_;
  std::string expectedEnding_ = "0";
};

}  // namespace Simulator
