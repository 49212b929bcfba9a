#include "standalone/sms/Alphabet.h"

#include <cstdint>
#include <map>
#include <string_view>

#include "provider/GsmAlphabet.h"

namespace Standalone {
namespace {
constexpr char escapeCode = 0x1B;
constexpr char32_t replacement = 0xFFFD;

// The table of 3GPP TS 23.038, 6.2.1.1. The daemon's table differs from this table in two rows.
constexpr std::pair<char, std::string_view> extensions[] = {
    {0x0A, "\f"}, {0x14, "^"}, {0x28, "{"}, {0x29, "}"}, {0x2F, "\\"},
    {0x3C, "["},  {0x3D, "~"}, {0x3E, "]"}, {0x40, "|"}, {0x65, "€"}};

std::string_view extension(char code) {
  for (const auto& [of, text] : extensions)
    if (of == code) return text;
  return {};
}

std::map<std::string_view, std::string> makeCodes() {
  std::map<std::string_view, std::string> codes;
  for (unsigned code = 0; code < gsmDefaultAlphabet.size(); ++code)
    codes[gsmDefaultAlphabet[code]] = std::string(1, static_cast<char>(code));
  codes.erase("\x1B");
  for (const auto& [code, text] : extensions) codes[text] = std::string{escapeCode, code};
  return codes;
}

void appendUtf8(std::string& text, char32_t c) {
  const auto put = [&text](char32_t octet) { text += static_cast<char>(octet); };
  const auto continuation = [&](unsigned shift) { put(0x80U | ((c >> shift) & 0x3FU)); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0U | (c >> 6U));
    continuation(0);
  } else if (c < 0x10000) {
    put(0xE0U | (c >> 12U));
    continuation(6);
    continuation(0);
  } else {
    put(0xF0U | (c >> 18U));
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

bool isSurrogate(char32_t c) { return c >= 0xD800 && c < 0xE000; }

// Returns the number of octets of the UTF-8 character that begins with `lead`.
std::size_t lengthOf(unsigned lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

// Removes the first character of `rest` and returns this character. Returns nullopt if it is not valid UTF-8.
std::optional<char32_t> takeCharacter(std::string_view& rest) {
  const auto octet = [&rest](std::size_t at) {
    return at < rest.size() ? static_cast<unsigned char>(rest[at]) : 0U;
  };
  const unsigned lead = octet(0);
  const std::size_t length = lengthOf(lead);
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4) return std::nullopt;
  char32_t c = length == 1 ? lead : lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((octet(i) & 0xC0U) != 0x80) return std::nullopt;
    c = (c << 6U) | (octet(i) & 0x3FU);
  }
  if (c < smallest[length] || c > 0x10FFFF || isSurrogate(c)) return std::nullopt;
  rest.remove_prefix(length);
  return c;
}

void appendUtf16(std::string& octets, char32_t unit) {
  octets += static_cast<char>(unit >> 8U);
  octets += static_cast<char>(unit & 0xFFU);
}
}  // namespace

std::string fromGsm(const std::string& codes) {
  std::string text;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i] == escapeCode) {
      ++i;
      if (i == codes.size()) break;
      if (const std::string_view extended = extension(codes[i]); !extended.empty()) {
        text += extended;
        continue;
      }
    }
    text += gsmDefaultAlphabet[static_cast<unsigned char>(codes[i]) & 0x7FU];
  }
  return text;
}

std::string fromUtf16(const std::string& octets) {
  const auto unit = [&octets](std::size_t at) -> char32_t {
    if (at + 1 >= octets.size()) return 0;
    return static_cast<unsigned char>(octets[at]) * 256U + static_cast<unsigned char>(octets[at + 1]);
  };
  std::string text;
  for (std::size_t at = 0; at < octets.size(); at += 2) {
    char32_t c = unit(at);
    const char32_t next = unit(at + 2);
    if (c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10U) + (next - 0xDC00);
      at += 2;
    }
    appendUtf8(text, c == 0 || isSurrogate(c) ? replacement : c);
  }
  return text;
}

std::optional<std::string> toGsm(const std::string& text) {
  static const std::map<std::string_view, std::string> codes = makeCodes();
  std::string result;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view before = rest;
    if (!takeCharacter(rest)) return std::nullopt;
    const auto found = codes.find(before.substr(0, before.size() - rest.size()));
    if (found == codes.end()) return std::nullopt;
    result += found->second;
  }
  return result;
}

std::optional<std::string> toUtf16(const std::string& text) {
  std::string octets;
  for (std::string_view rest = text; !rest.empty();) {
    const std::optional<char32_t> c = takeCharacter(rest);
    if (!c) return std::nullopt;
    if (*c < 0x10000) {
      appendUtf16(octets, *c);
    } else {
      appendUtf16(octets, 0xD800 + ((*c - 0x10000) >> 10U));
      appendUtf16(octets, 0xDC00 + ((*c - 0x10000) & 0x3FFU));
    }
  }
  return octets;
}

bool isUtf8(const std::string& text) {
  for (std::string_view rest = text; !rest.empty();)
    if (!takeCharacter(rest)) return false;
  return true;
}

std::string toHex(const std::string& octets) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : octets) {
    const auto octet = static_cast<unsigned char>(c);
    text += {digits[octet / 16], digits[octet % 16]};
  }
  return text;
}

std::optional<std::string> fromHex(const std::string& digits) {
  if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
    return std::nullopt;
  std::string octets;
  for (std::size_t at = 0; at < digits.size(); at += 2)
    octets += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
  return octets;
}
}  // namespace Standalone
