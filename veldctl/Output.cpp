#include "veldctl/Output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cwchar>
#include <iostream>

#include "support/Text.h"

namespace {
unsigned complained = 0;

// Decodes the first `length` bytes of `text`, which are one character.
std::uint32_t decode(std::string_view text, std::size_t length) {
  constexpr unsigned leadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
  std::uint32_t character = static_cast<unsigned char>(text[0]) & leadBits[length - 1];
  for (std::size_t i = 1; i < length; ++i)
    character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
  return character;
}

// Returns true for marks, embeddings, overrides and isolates of bidirectional text, and line separators.
bool changesDirection(std::uint32_t character) {
  return character == 0x061C || character == 0x200E || character == 0x200F ||
         (character >= 0x2028 && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

std::string escaped(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    char escape[sizeof("#000")];
    std::snprintf(escape, sizeof(escape), "#%03o", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    text += escape;
  }
  return text;
}

std::size_t widthOf(std::uint32_t character) {
  static const bool isKnown = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
  const int columns = isKnown ? wcwidth(static_cast<wchar_t>(character)) : 1;
  return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

// Returns how many bytes of `text` fit into `columns` columns.
std::size_t bytesWithin(std::string_view text, std::size_t columns) {
  std::size_t bytes = 0;
  for (std::size_t used = 0; bytes < text.size();) {
    const std::size_t length = std::max<std::size_t>(Orvel::Text::printableLength(text.substr(bytes)), 1);
    used += widthOf(decode(text.substr(bytes), length));
    if (used > columns) break;
    bytes += length;
  }
  return bytes;
}
}  // namespace

std::string Output::line(const Json::Value& value) {
  static const Json::StreamWriterBuilder writer = [] {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    return builder;
  }();
  return Json::writeString(writer, value);
}

std::string Output::printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t length = Orvel::Text::printableLength(text);
    const bool isPlain = length > 0 && !changesDirection(decode(text, length));
    const std::size_t taken = std::max<std::size_t>(length, 1);
    shown += isPlain ? std::string(text.substr(0, taken)) : escaped(text.substr(0, taken));
    text.remove_prefix(taken);
  }
  return shown;
}

void Output::complain(const std::string& text) {
  std::cerr << "veldctl: " << printable(text) << std::endl;
  ++complained;
}

unsigned Output::complaints() { return complained; }

std::size_t Output::width(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(Orvel::Text::printableLength(text), 1);
    columns += widthOf(decode(text, length));
    text.remove_prefix(length);
  }
  return columns;
}

std::string Output::cut(std::string_view text, std::size_t columns) {
  if (width(text) <= columns) return std::string(text);
  if (columns == 0) return "";
  return std::string(text.substr(0, bytesWithin(text, columns - 1))) + "…";
}

std::string Output::padded(std::string_view text, std::size_t columns) {
  const std::size_t used = width(text);
  return std::string(text) + std::string(columns > used ? columns - used : 0, ' ');
}

std::size_t Output::terminalWidth() {
  constexpr std::size_t usual = 80;
  if (isatty(STDOUT_FILENO) == 0) return 0;
  winsize size{};
  const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : usual;
}
