#include "fuzz/shared/ReferenceDecoder.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

#include "provider/GsmAlphabet.h"

namespace {
bool isHexDigit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

// Removes the first byte or escape from `rest`. Returns its octet, 0 at the end, -1 for an invalid escape.
int takeOctet(std::string& rest) {
  const auto take = [&](std::size_t length) {
    const std::string taken = rest.substr(0, length);
    rest.erase(0, length);
    return taken;
  };
  if (rest.empty()) return 0;
  if (rest[0] != '\\') return static_cast<unsigned char>(take(1)[0]);
  if (rest.substr(0, 2) == "\\x") {
    const std::string escape = take(4);
    if (escape.size() < 4 || !isHexDigit(escape[2]) || !isHexDigit(escape[3])) return -1;
    return std::stoi(escape.substr(2), nullptr, 16);
  }
  constexpr std::string_view letters = "\"'?\\abfnrtv";
  constexpr std::string_view octets = "\"'?\\\a\b\f\n\r\t\v";
  const std::string escape = take(2);
  const std::size_t letter = escape.size() == 2 ? letters.find(escape[1]) : std::string_view::npos;
  return letter != std::string_view::npos ? octets[letter] : -1;
}

// Returns the character that the escape code 0x1B and the character `printed` stand for; "" if there is none.
std::string_view behindEscapeCode(char printed) {
  const auto* const code = std::find_if(gsmDefaultAlphabet.begin(), gsmDefaultAlphabet.end(),
                                        [&](std::string_view entry) { return entry[0] == printed; });
  return code != gsmDefaultAlphabet.end()
             ? gsmExtensionAlphabet[static_cast<std::size_t>(code - gsmDefaultAlphabet.begin())]
             : "";
}
}  // namespace

namespace ReferenceDecoder {
void parseHeader(Json::Value& record, std::string& text) {
  std::string rest = text;
  if (takeOctet(rest) < 1) return;
  const int element = takeOctet(rest);
  if (element != 0 && element != 8) return;
  if (takeOctet(rest) != (element == 8 ? 4 : 3)) return;
  int reference = takeOctet(rest);
  if (element == 0 && reference == -1) return;
  if (element == 8) reference = ((reference + 256) % 256) * 256 + (takeOctet(rest) + 256) % 256;
  const int count = takeOctet(rest);
  const int number = takeOctet(rest);
  if (count == -1 || number == -1) return;
  if (rest.substr(0, 4) == "\\x00") rest.erase(0, 4);
  text = rest;
  if (number == 0 || count < number) return;
  record["part-id"] = reference;
  record["part-index"] = number - 1;
  record["part-count"] = count;
}

void unescape(std::string& text) {
  for (std::size_t at = text.find('\\'); at != std::string::npos; at = text.find('\\', at)) {
    constexpr std::string_view letters = "\"\\nrt";
    constexpr std::string_view octets = "\"\\\n\r\t";
    const std::size_t letter = at + 1 < text.size() ? letters.find(text[at + 1]) : std::string_view::npos;
    if (letter == std::string_view::npos) {
      at += 2;
    } else {
      text.replace(at, 2, 1, octets[letter]);
      at += 1;
    }
  }
}

void decode(std::string& text) {
  for (std::size_t at = text.find("\\x"); at != std::string::npos; at = text.find("\\x", at + 1)) {
    const char first = at + 2 < text.size() ? text[at + 2] : '\0';
    if (std::isdigit(static_cast<unsigned char>(first)) == 0 && first != 'a') return;
    unsigned code = 0;
    std::istringstream(text.substr(at + 2, 2)) >> std::hex >> code;
    if (code == 0x1B)
      text.replace(at, 5, at + 4 < text.size() ? behindEscapeCode(text[at + 4]) : "");
    else
      text.replace(at, 4, code < 128 ? gsmDefaultAlphabet[code] : gsmExtensionAlphabet[code - 128]);
  }
}
}  // namespace ReferenceDecoder
