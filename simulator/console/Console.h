#pragma once

#include "simulator/console/Interpreter.h"

namespace Simulator {
/// Runs the console at a terminal until "quit" or the end of the input. Before each prompt, the gateway
/// carries out the commands that its API accepted, and the console prints the new log lines in colours.
void runConsole(Interpreter& commands);
}  // namespace Simulator
