#pragma once

#include <string>

namespace Standalone {

/// Returns the text that answers a command with this output: the output, cut to what three messages can hold.
/// Replaces control characters and invalid UTF-8 by "?". Without output, returns "done" or "failed".
std::string replyText(const std::string& output, bool succeeded);

}  // namespace Standalone
