#pragma once

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Runs the console at a terminal until "quit" or the end of the input: a line editor with history and
/// completion, and the log in colours. Before each prompt the gateway carries out the commands of its API.
void runConsole(Interpreter& commands);

}  // namespace Simulator
