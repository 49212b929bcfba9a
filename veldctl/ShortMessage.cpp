#include "veldctl/ShortMessage.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "provider/GsmAlphabet.h"
#include "support/Text.h"

namespace {
constexpr unsigned mostMessages = 255;
constexpr char tooLong[] =
    "the text is too long: 255 messages hold 39015 characters of the GSM alphabet, or 17085 other characters";
constexpr std::string_view escapeCode = "\x1B";  // a code of the alphabet, but not a character

// Returns the length of a character in septets; 0 if the GSM alphabet lacks the character.
unsigned septets(std::string_view character) {
  const auto isIn = [&](const auto& codes) {
    return std::find(codes.begin(), codes.end(), character) != codes.end();
  };
  if (character == escapeCode) return 0;
  if (isIn(gsmDefaultAlphabet)) return 1;
  return isIn(gsmExtensionAlphabet) ? 2 : 0;
}

// Returns how many messages hold characters of these lengths. A single message holds `whole` units. Each part
// of a concatenated message holds `part` units. A character is never divided between two parts.
unsigned count(const std::vector<unsigned>& units, unsigned whole, unsigned part) {
  unsigned all = 0, parts = 1, used = 0;
  for (const unsigned unit : units) {
    all += unit;
    used += unit;
    if (used <= part) continue;
    ++parts;
    used = unit;
  }
  return all <= whole ? 1 : parts;
}

// Returns the length of the first character in bytes; 0 if this character cannot be sent. All control
// characters below the blank except NUL can be sent.
std::size_t lengthOfNext(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  return first > 0 && first < ' ' ? 1 : Orvel::Text::printableLength(text);
}

std::string faultAt(const std::string& text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  const std::string where = ", at byte " + std::to_string(at + 1);
  if (byte == 0) return "the text holds a NUL character" + where;
  const bool isControl = byte == 0x7F || (byte == 0xC2 && at + 1 < text.size() &&
                                          static_cast<unsigned char>(text[at + 1]) - 0x80U < 0x20U);
  return (isControl ? "the text holds a control character" : "the text is not valid UTF-8") + where;
}
}  // namespace

bool ShortMessage::isNumber(const std::string& number) {
  constexpr std::size_t most = 20;
  const std::size_t begin = number.compare(0, 1, "+") == 0 ? 1 : 0;
  return number.size() > begin && number.size() <= begin + most &&
         number.find_first_not_of("0123456789", begin) == std::string::npos;
}

ShortMessage::Encoding ShortMessage::encodingOf(const std::string& text) {
  Encoding encoding;
  if (text.empty()) encoding.fault = "the text is empty";
  if (text.size() > mostBytes) encoding.fault = tooLong;
  std::vector<unsigned> gsm, ucs2;
  for (std::string_view rest = text; encoding.fault.empty() && !rest.empty();) {
    const std::size_t length = lengthOfNext(rest);
    if (length == 0) encoding.fault = faultAt(text, text.size() - rest.size());
    const std::string_view character = rest.substr(0, length);
    rest.remove_prefix(length);
    gsm.push_back(septets(character));
    ucs2.push_back(length == 4 ? 2 : 1);
    const bool isOutside = gsm.back() == 0;
    if (isOutside && encoding.outside.find(character) == std::string::npos) encoding.outside += character;
  }
  if (!encoding.fault.empty()) return encoding;
  encoding.messages = encoding.outside.empty() ? count(gsm, 160, 153) : count(ucs2, 70, 67);
  if (encoding.messages > mostMessages) encoding.fault = tooLong;
  return encoding;
}
