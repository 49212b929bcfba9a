#pragma once

#include <string>
#include <vector>

namespace Standalone {

/// How a program ended.
struct Ending {
  bool succeeded = false;  ///< it exited with status 0
  bool timedOut = false;
  std::string output;  ///< of its standard output, the first 64 KiB
};

/// Runs `words[0]`, which is looked up in PATH when it has no slash, with the other words as its arguments,
/// in a process group of its own, and waits for it. `environment` is all that it has of one; its working
/// directory is
/// "/" and `input`, 4 KiB at most, is its standard input. Standard error stays that of the caller. What is
/// left of the group when the program ends, or after `seconds`, is killed. A program that cannot be started
/// fails.
Ending runCommand(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                  const std::string& input, int seconds);

}  // namespace Standalone
