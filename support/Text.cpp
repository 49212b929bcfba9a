#include "support/Text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace Orvel::Text {
namespace {
unsigned byteAt(std::string_view text, std::size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}
}  // namespace

std::vector<std::string> split(const std::string& text, const std::string& separators, int limit) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (int left = limit; left > 0; --left) {
    const std::size_t end = left == 1 ? std::string::npos : text.find_first_of(separators, begin);
    pieces.push_back(text.substr(begin, end - begin));
    if (end == std::string::npos) break;
    begin = end + 1;
  }
  return pieces;
}

std::string trim(const std::string& text) {
  constexpr char whiteSpace[] = " \t\n\r\v\f";
  const std::size_t begin = text.find_first_not_of(whiteSpace);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

std::string toLowerCase(const std::string& text) {
  std::string lowered = text;
  for (char& c : lowered)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lowered;
}

std::size_t printableLength(std::string_view text) {
  const unsigned first = byteAt(text, 0);
  if (first < 0x80) return first >= 0x20 && first != 0x7F ? 1 : 0;
  if (first < 0xC0 || first >= 0xF8) return 0;
  std::size_t length = first < 0xE0 ? 2 : 3;
  if (first >= 0xF0) length = 4;
  std::uint32_t character = first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned next = byteAt(text, i);
    if ((next & 0xC0) != 0x80) return 0;
    character = character << 6 | (next & 0x3F);
  }
  constexpr std::uint32_t least[] = {0xA0, 0x800, 0x10000};  // the first printable character of 2, 3, 4 bytes
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  return character >= least[length - 2] && character <= 0x10FFFF && !surrogate ? length : 0;
}

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = printableLength(text);
    if (length > 0) {
      shown += text.substr(0, length);
    } else {
      char escape[sizeof("#000")];
      std::snprintf(escape, sizeof(escape), "#%03o", byteAt(text, 0));
      shown += escape;
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}
}  // namespace Orvel::Text
