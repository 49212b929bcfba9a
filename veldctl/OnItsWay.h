#pragma once

#include <cstdint>
#include <ctime>
#include <string>

/// What the daemon has taken off the modem or handed to it, and has not filed yet. That lasts for a moment in
/// each pass; longer when the daemon hangs, was ended, or cannot write.
struct OnItsWay {
  std::int64_t received = 0;  ///< messages that came and are not filed
  std::int64_t begun = 0;     ///< sends without an answer
  std::int64_t answered = 0;  ///< sends with an answer, not filed
  std::int64_t damaged = 0;   ///< files that make no sense
  std::time_t since = 0;      ///< when the first of those received came; 0 when that is not known
  bool isReadable = true;     ///< false when nobody can tell
};

/// `root` is the folder above the message folders.
OnItsWay readOnItsWay(const std::string& root);
