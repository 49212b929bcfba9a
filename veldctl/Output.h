#pragma once

#include <json/json.h>

#include <string>
#include <string_view>

/// What veldctl prints. No message text can move the cursor of a terminal, forge a line, or turn the
/// direction of what stands beside it.
namespace Output {

/// `value` on one line, in ASCII.
std::string line(const Json::Value& value);

/// `text` with "#" and three octal digits for each byte of a control character, of a character that steers
/// the direction of text, and of what is no UTF-8.
std::string printable(std::string_view text);

/// Writes "veldctl: TEXT" to standard error.
void complain(const std::string& text);

/// How often complain() was called.
unsigned complaints();

/// Columns that printable text takes on a terminal.
std::size_t width(std::string_view text);

/// Printable text of at most `columns` columns; what is cut off becomes an ellipsis.
std::string cut(std::string_view text, std::size_t columns);

/// Printable text with blanks behind it up to `columns` columns.
std::string padded(std::string_view text, std::size_t columns);

/// The width of the terminal on standard output; 0 when that is no terminal.
std::size_t terminalWidth();

}  // namespace Output
