#pragma once

#include <json/json.h>

#include <string>

#include "standalone/api/CommandRequest.h"
#include "standalone/api/Http.h"

namespace Standalone {

/// What a client is told, and what runs after that.
struct Answer {
  int code =
      0;  ///< 200: taken; 400: malformed; 403: switched off; 404: no such thing; 500: the settings are faulty
  Json::Value result;
  std::string program;  ///< the path of the command's program; empty when none is to run
  CommandRequest command;
};

/// Answers `request` from `folder`: GET /api/sms with the object in its settings.json, POST /api/command/NAME
/// when its commands.d has a program of that name and the settings permit it. Faulty settings are an ERROR in
/// the log.
Answer answerTo(const HttpRequest& request, const std::string& folder);

/// The answer to what is no request.
Answer answerToNoRequest();

/// Runs the program of `answer` with a bound of 60 seconds, one at a time, and queues its output for the
/// sender.
void carryOut(const Answer& answer, const std::string& folder);

}  // namespace Standalone
