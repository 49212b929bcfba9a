#pragma once

#include <string>

namespace Standalone {

/// The text that answers a command which printed `output`: at most three short messages of it, cut at a
/// character. What cannot be sent becomes "?". "done" or "failed" when there is no output.
std::string replyText(const std::string& output, bool succeeded);

}  // namespace Standalone
