#pragma once

#include <ctime>
#include <ios>
#include <string>

#include "veldctl/Command.h"

/// The outcome of a queued message.
struct Outcome {
  std::string guid;
  ExitStatus status = Unknown;  ///< Done if it was sent, Bad if it has failed
  std::string reason;           ///< why it has failed, or why the outcome is unknown
  std::time_t time = 0;         ///< when it was sent or has failed
};

/// Returns the size of the send log. Later output of the tool is after that offset.
std::streamoff endOfSendLog();

/// Waits at most `seconds` until a message is sent or has failed. `logged` is an earlier endOfSendLog().
Outcome awaitOutcome(const Folders& folders, const std::string& guid, unsigned seconds,
                     std::streamoff logged);

/// Prints the outcome as JSON; or on standard error, unless the message was sent. Returns the exit status.
int printOutcome(const Outcome& outcome, bool isJson);

constexpr unsigned waitSeconds = 60;  ///< if the command line has no time
