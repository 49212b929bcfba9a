#pragma once

#include <string>
#include <vector>

#include "faults/Tracer.h"

/// The errors that this system call of the daemon may plausibly meet on a gateway, as strace names them; none
/// for one that cannot fail there.
std::vector<std::string> plausibleErrors(const Tracer::Call& call);
