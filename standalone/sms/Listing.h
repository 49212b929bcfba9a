#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "standalone/sms/Modem.h"

namespace Standalone {
/// Prints messages in the form that the SMS daemon reads. The daemon then reads each text byte for byte.
/// Escapes backslash, quote, line feed, carriage return, and the word "index", which would begin a message.
/// Prints U+FFFD for a NUL, which would end the line. Prints other UTF-8 unchanged. The daemon reads lines of
/// at most 1,023 bytes, so a text of more than 900 printed bytes becomes several parts, each with a
/// concatenation header.
class Listing {
 public:
  /// Returns the lines of one message: four lines for each of its parts.
  std::string print(const Message& message);

 private:
  std::string block(const Message& message, const std::string& userData);
  std::uint16_t referenceFor(const Message& message);

  unsigned index_ = 0;
  std::set<std::uint16_t> references_;
};

/// Returns `text` in the form that it has between the quotes of a "user-data:" line.
std::string escaped(const std::string& text);
}  // namespace Standalone
