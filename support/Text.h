#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Orvel::Text {
/// Splits `text` at each character of `separators` into at most `limit` pieces. Adjacent, leading and
/// trailing separators give empty pieces. If `limit` is reached, the last piece holds the unsplit rest. A
/// `limit` below 1 gives no pieces.
std::vector<std::string> split(const std::string& text, const std::string& separators, int limit);

/// Removes blanks, tabs, line feeds, carriage returns, vertical tabs and form feeds from both ends of `text`.
std::string trim(const std::string& text);

/// Returns `text` with A to Z in lower case. Every other byte, also of a UTF-8 character, stays unchanged.
std::string toLowerCase(const std::string& text);

/// Returns the length in bytes of the UTF-8 character at the start of `text`; 0 for an empty text, a control
/// character (U+0000 to U+001F, U+007F to U+009F) or invalid UTF-8.
std::size_t printableLength(std::string_view text);

/// Returns `text`, with "#" and three octal digits for each byte of a control character or of invalid UTF-8.
std::string printable(std::string_view text);
}  // namespace Orvel::Text
