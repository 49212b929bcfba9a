#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "standalone/sms/Modem.h"

namespace Standalone {

/// Prints messages in the form that the SMS daemon reads, so that each text arrives there byte for byte.
///
/// The reader takes UTF-8 as it stands. Escaped are the backslash, the quote, line feed and carriage return,
/// and the word "index", which would begin a message. A text of more than 900 printed bytes goes out in parts
/// with a concatenation header, because the reader takes 1,023 bytes of a line. A NUL, which ends a line for
/// the reader, is printed as U+FFFD.
class Listing {
 public:
  /// The blocks of one message: one, or one for each part.
  std::string print(const Message& message);

 private:
  std::string block(const Message& message, const std::string& userData);
  std::uint16_t referenceFor(const Message& message);

  unsigned index_ = 0;
  std::set<std::uint16_t> references_;
};

/// The escaped form of `text`, for the inside of the quotes of a "user-data:" line.
std::string escaped(const std::string& text);

}  // namespace Standalone
