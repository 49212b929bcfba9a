#pragma once

#include <string>
#include <vector>

namespace Standalone {
struct Ending {
  bool succeeded = false;  ///< true if the program exited with status 0
  bool timedOut = false;
  std::string output;  ///< the first 64 KiB of its standard output
};

/// Runs the program `words[0]` with the other words as arguments, and waits until the program ends. Searches
/// PATH if `words[0]` has no slash. The program has exactly the variables in `environment`, the working
/// directory "/", the caller's standard error, and `input` (at most 4 KiB) as standard input. It runs in a
/// new process group, which is killed after `seconds` or when the program ends. A program that cannot be
/// started counts as failed.
Ending runCommand(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                  const std::string& input, int seconds);
}  // namespace Standalone
