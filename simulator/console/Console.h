#pragma once

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// The console at a terminal: a line editor with history and completion, the log in colours by level.
/// Executes what is typed until "quit" or the end of the input. While a line is typed the daemon goes on in
/// real time; what the API was asked for is carried out before the next prompt.
void runConsole(Interpreter& commands);

}  // namespace Simulator
