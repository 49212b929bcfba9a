#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Standalone {

/// What the body of a command request says.
struct CommandRequest {
  std::string sender;             ///< the number of the phone, which gets the answer
  std::vector<std::string> args;  ///< none holds a NUL character
};

/// Reads {"recipients": ["+4917012345"], "args": ["8.8.8.8"]}. The body holds what a phone wrote, without
/// escapes: none for anything but exactly these two members, one number and texts.
std::optional<CommandRequest> parseCommandRequest(const std::string& body);

}  // namespace Standalone
