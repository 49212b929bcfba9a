#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Standalone {
struct CommandRequest {
  std::string sender;             ///< the number of the phone that gets the answer
  std::vector<std::string> args;  ///< without NUL characters
};

/// Reads {"recipients": ["+4917012345"], "args": ["8.8.8.8"]}: one number, and any number of texts. Returns
/// nullopt for any other body. The check is strict, because veld does not escape the quotes of an SMS.
std::optional<CommandRequest> parseCommandRequest(const std::string& body);
}  // namespace Standalone
