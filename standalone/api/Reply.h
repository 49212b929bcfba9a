#pragma once

#include <string>

namespace Standalone {
/// Returns the answer to a command that has printed `output`. Cuts the answer to three messages. Replaces
/// control characters and invalid UTF-8 by "?". Without output, returns "done" or "failed".
std::string replyText(const std::string& output, bool succeeded);
}  // namespace Standalone
