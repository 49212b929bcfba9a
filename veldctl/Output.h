#pragma once

#include <json/json.h>

#include <string>
#include <string_view>

/// Formats and prints text. Escapes keep a message from moving the terminal's cursor, from forging a line,
/// and from changing the direction of the text beside it.
namespace Output {

/// Returns `value` as JSON on one line, in ASCII.
std::string line(const Json::Value& value);

/// Replaces each byte of a control character, of a character that changes the direction of text, and of
/// invalid UTF-8 by "#" and three octal digits.
std::string printable(std::string_view text);

/// Writes "veldctl: TEXT" to standard error.
void complain(const std::string& text);

/// Returns how often complain() was called.
unsigned complaints();

/// Returns the columns that printable text takes on a terminal.
std::size_t width(std::string_view text);

/// Cuts printable text to at most `columns` columns. A text that was cut ends with an ellipsis.
std::string cut(std::string_view text, std::size_t columns);

/// Appends blanks to printable text up to `columns` columns.
std::string padded(std::string_view text, std::size_t columns);

/// Returns the width of the terminal on standard output; 0 if that is not a terminal.
std::size_t terminalWidth();

}  // namespace Output
