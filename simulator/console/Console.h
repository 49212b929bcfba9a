#pragma once

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Runs the console at a terminal, until "quit" or the end of the input: a line editor with history and
/// completion, and the log in colours by level. The daemon goes on while a line is typed. Before each prompt
/// the gateway carries out the commands that its API accepted.
void runConsole(Interpreter& commands);

}  // namespace Simulator
