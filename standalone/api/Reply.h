#pragma once

#include <string>

namespace Standalone {

/// Returns the answer to a command that printed `output`, cut between characters to fit three short messages.
/// "?" replaces a control character and a byte that is not UTF-8. Without output returns "done" or "failed".
std::string replyText(const std::string& output, bool succeeded);

}  // namespace Standalone
