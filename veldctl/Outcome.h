#pragma once

#include <ctime>
#include <ios>
#include <string>

#include "veldctl/Command.h"

struct Outcome {
  std::string guid;
  ExitStatus status = Unknown;  ///< Done if it was sent, Bad if it has failed
  std::string reason;           ///< why it has failed, or why the outcome is unknown
  std::time_t time = 0;         ///< when it was sent or has failed
};

/// Returns the size of the send log. The next output of the tool begins at this offset.
std::streamoff endOfSendLog();

/// Waits at most `seconds` until a message is sent or has failed. Reads the reason of a failure from the send
/// log after the offset `logged`.
Outcome awaitOutcome(const Folders& folders, const std::string& guid, unsigned seconds,
                     std::streamoff logged);

/// Prints the outcome as JSON. As text, prints only a failed or unknown outcome. Returns the exit status.
int printOutcome(const Outcome& outcome, bool isJson);

constexpr unsigned waitSeconds = 60;  ///< how long to wait if the command line does not say
