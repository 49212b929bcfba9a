#pragma once

#include <json/json.h>

#include <string>

#include "standalone/api/CommandRequest.h"
#include "standalone/api/Http.h"

namespace Standalone {
/// The answer to a client, and the program to run after the answer was written.
struct Answer {
  /// 200: accepted; 400: malformed; 403: switched off; 404: unknown; 500: invalid settings
  int code = 0;
  Json::Value result;
  std::string program;  ///< the path of the command's program; empty if no program is to run
  CommandRequest command;
};

/// Answers GET /api/sms with the object in settings.json of `folder`. Accepts POST /api/command/NAME if
/// commands.d of `folder` has a program with this name and the settings permit the command. Logs invalid
/// settings as an ERROR.
Answer answerTo(const HttpRequest& request, const std::string& folder);

Answer answerToMalformed();

/// Waits until no other process runs a program of `folder`. Then runs the program of `answer` for at most 60
/// seconds, and queues the program's output as a message to the sender.
void runProgram(const Answer& answer, const std::string& folder);
}  // namespace Standalone
