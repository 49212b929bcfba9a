#pragma once

#include <string>

namespace Standalone {

/// The answer to a command that printed `output`: at most three short messages, cut between characters. A
/// character that cannot be sent becomes "?". "done" or "failed" without output.
std::string replyText(const std::string& output, bool succeeded);

}  // namespace Standalone
