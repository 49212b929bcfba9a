#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Standalone {

/// The content of a command request's body.
struct CommandRequest {
  std::string sender;             ///< the number of the phone, which gets the answer
  std::vector<std::string> args;  ///< without NUL characters
};

/// Reads {"recipients": ["+4917012345"], "args": ["8.8.8.8"]}. Nullopt if the body does not consist of
/// "recipients" with one number and "args" with texts: veld does not escape a phone's text in it.
std::optional<CommandRequest> parseCommandRequest(const std::string& body);

}  // namespace Standalone
