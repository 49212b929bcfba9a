#include "provider/UserData.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "provider/GsmAlphabet.h"
#include "storage/MessageRecord.h"

namespace {
namespace Key = MessageRecord::Key;

constexpr int noByte = -1;
constexpr unsigned escapeCode = 0x1B;
constexpr std::uint8_t noCode = 0xFF;
constexpr char firstEscapable = '"';
constexpr std::size_t hexEscapeLength = 4;  // for example \x41

// The index is the character after a backslash minus `firstEscapable`. The value is the octet, or -1.
using EscapeCharacterTable = std::array<signed char, 'v' - firstEscapable + 1>;

constexpr EscapeCharacterTable makeEscapeCharacterTable() {
  EscapeCharacterTable table{};
  for (auto& octet : table) octet = noByte;
  constexpr char escapes[][2] = {{'"', '"'},  {'\'', '\''}, {'?', '?'},  {'\\', '\\'},
                                 {'a', '\a'}, {'b', '\b'},  {'f', '\f'}, {'n', '\n'},
                                 {'r', '\r'}, {'t', '\t'},  {'v', '\v'}};
  for (const auto& escape : escapes)
    table[static_cast<std::size_t>(escape[0] - firstEscapable)] = static_cast<signed char>(escape[1]);
  return table;
}

constexpr EscapeCharacterTable escapeCharacterTable = makeEscapeCharacterTable();

char at(const std::string& text, std::size_t position) {
  return position < text.size() ? text[position] : '\0';
}

int readHexEscape(const std::string& text, std::size_t cursor) {
  const int high = hexDigitValue(at(text, cursor + 2));
  const int low = hexDigitValue(at(text, cursor + 3));
  return high >= 0 && low >= 0 ? high * 16 + low : noByte;
}

// Returns the value of the one or two hexadecimal digits at the start of `digits`.
unsigned hexNumber(std::string_view digits) {
  const auto high = static_cast<unsigned>(hexDigitValue(digits[0]));
  const int low = digits.size() > 1 ? hexDigitValue(digits[1]) : noByte;
  return low >= 0 ? high * 16 + static_cast<unsigned>(low) : high;
}

// Returns the character that replaces a backslash and `escape` in unescapeText; NUL if both stay.
char resolvedEscape(char escape) {
  switch (escape) {
    case '"':
    case '\\':
      return escape;
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return '\0';
  }
}

bool startsDecodableCode(char firstDigit) {
  return (firstDigit >= '0' && firstDigit <= '9') || firstDigit == 'a';
}

// Finds the lowest code whose default character begins with the byte `printed` in UTF-8. Returns the
// character of this code in the extension table, or an empty text if there is no such code.
std::string_view extensionText(char printed) {
  static const auto codes = [] {
    std::array<std::uint8_t, 256> table;
    table.fill(noCode);
    for (std::uint8_t code = 128; code-- > 0;)
      table[static_cast<unsigned char>(gsmDefaultAlphabet[code][0])] = code;
    return table;
  }();
  const std::uint8_t code = codes[static_cast<unsigned char>(printed)];
  return code != noCode ? gsmExtensionAlphabet[code] : std::string_view();
}
}  // namespace

int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

int readEscapedByte(std::size_t& cursor, const std::string& text) {
  const std::size_t begin = cursor;
  const char c = at(text, begin);
  if (c != '\\') {
    cursor += 1;
    return static_cast<unsigned char>(c);
  }
  const char escape = at(text, begin + 1);
  if (escape == 'x') {
    cursor += hexEscapeLength;
    return readHexEscape(text, begin);
  }
  cursor += 2;
  const std::size_t index = static_cast<unsigned char>(escape - firstEscapable);
  return index < escapeCharacterTable.size() ? escapeCharacterTable[index] : noByte;
}

void parseUserDataHeader(Json::Value& record, std::string& text) {
  constexpr int reference8 = 0x00;
  constexpr int reference16 = 0x08;
  constexpr char fillOctet[] = "\\x00";
  std::size_t cursor = 0;
  const auto read = [&] { return readEscapedByte(cursor, text); };

  if (read() < 1) return;
  const int element = read();
  if (element != reference8 && element != reference16) return;
  int reference = 0;
  if (element == reference16) {
    if (read() != 4) return;
    const int high = read() & 0xFF;
    reference = high * 256 + (read() & 0xFF);
  } else {
    if (read() != 3) return;
    reference = read();
    if (reference == noByte) return;
  }
  const int count = read();
  const int number = read();
  if (count == noByte || number == noByte) return;

  if (cursor < text.size() && text.compare(cursor, hexEscapeLength, fillOctet) == 0)
    cursor += hexEscapeLength;
  text.erase(0, cursor);
  if (number == 0 || count < number) return;
  record[Key::PartId] = reference;
  record[Key::PartIndex] = number - 1;
  record[Key::PartCount] = count;
}

void unescapeText(std::string& text) {
  std::size_t end = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    text[end++] = c;
    if (c != '\\' || i + 1 == text.size()) continue;
    const char escape = text[++i];
    if (const char resolved = resolvedEscape(escape))
      text[end - 1] = resolved;
    else
      text[end++] = escape;
  }
  text.resize(end);
}

void decodeGsmEscapes(std::vector<char>& bytes) {
  // A replacement is never longer than the text that it replaces, so the buffer is rewritten in place.
  char* out = bytes.data();
  std::string_view rest(bytes.data(), bytes.size());
  const auto copy = [&](std::size_t length) {
    out = std::copy_n(rest.begin(), length, out);
    rest.remove_prefix(length);
  };
  while (true) {
    copy(std::min(rest.find("\\x"), rest.size()));
    if (rest.size() < 3 || !startsDecodableCode(rest[2])) break;
    const unsigned code = hexNumber(rest.substr(2, 2));
    rest.remove_prefix(std::min(hexEscapeLength, rest.size()));
    std::string_view replacement;
    if (code != escapeCode) {
      replacement = gsmAlphabets[code / 128][code % 128];
    } else if (!rest.empty()) {
      replacement = extensionText(rest[0]);
      rest.remove_prefix(1);
    }
    out = std::copy(replacement.begin(), replacement.end(), out);
    // After an empty replacement, the next byte is copied without decoding.
    if (replacement.empty()) copy(std::min<std::size_t>(1, rest.size()));
  }
  copy(rest.size());
  bytes.resize(static_cast<std::size_t>(out - bytes.data()));
}

std::string decodeUserData(std::string text, Json::Value& record) {
  parseUserDataHeader(record, text);
  unescapeText(text);
  std::vector<char> bytes(text.begin(), text.end());
  decodeGsmEscapes(bytes);
  return std::string(bytes.begin(), bytes.end());
}
