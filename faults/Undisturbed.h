#pragma once

#include <ostream>

#include "faults/Trial.h"

/// Writes what an undisturbed pass of each scenario shows: the shell's commands, the log lines and the
/// requests in their order, and then the files. Dates and guids are replaced.
bool writeUndisturbed(const Trial::Programs& programs, std::ostream& out);
