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

/// Runs `words[0]`, searched in PATH when it has no slash, with the other words as arguments, in a new
/// process group, and waits for it. Its whole environment is `environment`, its working directory "/", its
/// standard input `input`, 4 KiB at most, and its standard error the caller's. Kills the rest of the group
/// when the program ends, or the group after `seconds`. A program that cannot be started counts as failed.
Ending runCommand(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                  const std::string& input, int seconds);

}  // namespace Standalone
