#pragma once

#include <string>
#include <vector>

/// The errors that a system call of the daemon may plausibly meet on a gateway, as strace names them; none
/// for one that cannot fail there.
std::vector<std::string> plausibleErrors(const std::string& call);
