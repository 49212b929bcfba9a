#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Orvel::Text {

/// Splits `text` at every character of `separators` into at most `limit` pieces. Adjacent, leading and
/// trailing separators give empty pieces. If `limit` is reached, the last piece holds the rest unsplit. A
/// `limit` below 1 gives no pieces.
std::vector<std::string> split(const std::string& text, const std::string& separators, int limit);

/// `text` without blanks, tabs, line feeds, carriage returns, vertical tabs and form feeds at either end.
std::string trim(const std::string& text);

/// `text` with A to Z lowered; every other byte, those of UTF-8 included, stays as it is.
std::string toLowerCase(const std::string& text);

/// The length in bytes of the UTF-8 character at the start of `text`; 0 for a control character (U+0000 to
/// U+001F, U+007F to U+009F) and for invalid UTF-8.
std::size_t printableLength(std::string_view text);

/// `text` with each byte of a control character or of invalid UTF-8 as "#" and three octal digits.
std::string printable(std::string_view text);

}  // namespace Orvel::Text
