#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Standalone {

/// The content of a command request's body.
struct CommandRequest {
  std::string sender;             ///< the number of the phone, which gets the answer
  std::vector<std::string> args;  ///< none holds a NUL character
};

/// Reads {"recipients": ["+4917012345"], "args": ["8.8.8.8"]}. The body contains a phone's text
/// unescaped, so anything but exactly these two members, one number and texts, gives none.
std::optional<CommandRequest> parseCommandRequest(const std::string& body);

}  // namespace Standalone
