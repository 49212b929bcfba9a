#pragma once

#include <string>

/// Where a gateway has what veldctl looks at.
struct Places {
  std::string messages;  ///< root of the message folders
  std::string staging;   ///< where the daemon's files are on their way
  std::string sendLog;   ///< what the tool says while it sends
};

/// Carries out one command line. The exit status: 0 for success, 1 for failure, 3 when it is not known, 64
/// when the line is none; of `status` and `check` 0, 1 or 2, see Output::Verdict.
int runCommandLine(int count, char** words, const Places& places);
