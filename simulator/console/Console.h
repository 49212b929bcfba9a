#pragma once

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// The console at a terminal: a line editor with history and completion, the log in colours by level.
class Console {
 public:
  explicit Console(Interpreter& interpreter) : interpreter_(interpreter) {}

  /// Executes what is typed until "quit" or the end of the input. While a line is typed the daemon goes on in
  /// real time; what the API was asked for is carried out before the next prompt.
  void run();

 private:
  void execute(const std::string& line);
  void showLog();

  Interpreter& interpreter_;
  std::size_t logged_ = 0;
  std::size_t told_ = 0;
};

}  // namespace Simulator
