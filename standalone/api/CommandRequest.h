#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Standalone {

/// The body of a request for a command.
struct CommandRequest {
  std::string sender;             ///< the number of the phone that gets the answer
  std::vector<std::string> args;  ///< without NUL characters
};

/// Reads {"recipients": ["+4917012345"], "args": ["8.8.8.8"]}. Returns nullopt for any other members, and
/// unless "recipients" is one number and "args" are texts: veld does not escape the words of an SMS here.
std::optional<CommandRequest> parseCommandRequest(const std::string& body);

}  // namespace Standalone
