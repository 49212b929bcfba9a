#pragma once

#include <ctime>
#include <ios>
#include <string>

#include "veldctl/Command.h"

/// What became of a queued message.
struct Outcome {
  std::string guid;
  Ending ending = Unknown;  ///< Done when it was sent, Bad when it has failed
  std::string reason;       ///< why it has failed, or why nobody knows
  std::time_t time = 0;     ///< when it was sent or has failed
};

/// Where the send log ends. What the tool says of a message that is queued later stands behind that.
std::streamoff endOfSendLog();

/// Waits until a message was sent or has failed, `seconds` at most.
Outcome awaitOutcome(const Folders& folders, const std::string& guid, unsigned seconds,
                     std::streamoff logged);

/// Prints it, as JSON or, when the message was not sent, on standard error. Returns the exit status.
int printOutcome(const Outcome& outcome, bool isJson);

constexpr unsigned waitSeconds = 60;  ///< unless the command line says otherwise
