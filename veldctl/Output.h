#pragma once

#include <json/json.h>

#include <string>
#include <string_view>

/// Formats and prints text. printable() escapes the characters with which a message could move the terminal's
/// cursor, forge a line, or change the direction of other text.
namespace Output {
/// Returns `value` as JSON on one line, in ASCII.
std::string line(const Json::Value& value);

/// Escapes control characters, characters that change the direction of text, and invalid UTF-8. Each of their
/// bytes becomes "#" and three octal digits.
std::string printable(std::string_view text);

/// Writes "veldctl: TEXT" to standard error.
void complain(const std::string& text);

/// Returns how often complain() was called.
unsigned complaints();

/// Returns how many columns printable text takes on a terminal.
std::size_t width(std::string_view text);

/// Cuts printable text to at most `columns` columns. A text that was cut ends with an ellipsis.
std::string cut(std::string_view text, std::size_t columns);

/// Appends blanks to printable text until it takes `columns` columns.
std::string padded(std::string_view text, std::size_t columns);

/// Returns the width of the terminal; 0 if standard output is not a terminal.
std::size_t terminalWidth();
}  // namespace Output
