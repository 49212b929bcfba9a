#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Orvel::Text {

/// The pieces of `text` between characters of `separators`, at most `limit` of them. Two separators in a row
/// give an empty piece, as does one at the start or the end. When there are more pieces than `limit`, the
/// last one holds the rest as it stands. A `limit` below 1 gives none.
std::vector<std::string> split(const std::string& text, const std::string& separators, int limit);

/// `text` without blanks, tabs, line feeds, carriage returns, vertical tabs and form feeds at either end.
std::string trim(const std::string& text);

/// `text` with A to Z lowered; every other byte, those of UTF-8 included, stays as it is.
std::string toLowerCase(const std::string& text);

/// The bytes of the UTF-8 character that `text` begins with; 0 when it is a control character (U+0000 to
/// U+001F, U+007F to U+009F) or no UTF-8.
std::size_t printableLength(std::string_view text);

/// `text` with each byte of a control character, and each that is no UTF-8, as "#" and three octal digits.
std::string printable(std::string_view text);

}  // namespace Orvel::Text
