#pragma once

#include <json/json.h>

#include <string>

#include "standalone/api/CommandRequest.h"
#include "standalone/api/Http.h"

namespace Standalone {

/// The answer to a client, and the program that runs afterwards.
struct Answer {
  int code =
      0;  ///< 200: taken; 400: malformed; 403: switched off; 404: no such thing; 500: the settings are faulty
  Json::Value result;
  std::string program;  ///< the path of the command's program; empty: none
  CommandRequest command;
};

/// Answers `request` from `folder`: GET /api/sms with the object in its settings.json, POST /api/command/NAME
/// when its commands.d has a program of that name and the settings permit it. Logs invalid settings as an
/// ERROR.
Answer answerTo(const HttpRequest& request, const std::string& folder);

/// The answer to a malformed request.
Answer answerToNoRequest();

/// Runs the program of `answer` for at most 60 seconds, one program at a time, and queues its output for the
/// sender.
void carryOut(const Answer& answer, const std::string& folder);

}  // namespace Standalone
