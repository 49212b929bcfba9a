#include "veldctl/ShortMessage.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "provider/GsmAlphabet.h"
#include "support/Text.h"

namespace {

constexpr std::string_view escapeCode = "\x1B";  // a code of the alphabet, but no character

// The septets of a character; 0 when the GSM alphabet lacks it.
unsigned septets(std::string_view character) {
  const auto in = [&](const auto& codes) {
    return std::find(codes.begin(), codes.end(), character) != codes.end();
  };
  return character == escapeCode ? 0 : in(gsmDefaultAlphabet) ? 1 : in(gsmExtensionAlphabet) ? 2 : 0;
}

// How many messages characters of these units take: one, or parts, and no character is cut.
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

}  // namespace

bool ShortMessage::isNumber(const std::string& number) {
  constexpr std::size_t most = 20;
  const std::size_t begin = number.compare(0, 1, "+") == 0 ? 1 : 0;
  return number.size() > begin && number.size() <= begin + most &&
         number.find_first_not_of("0123456789", begin) == std::string::npos;
}

ShortMessage::Shape ShortMessage::shapeOf(const std::string& text) {
  Shape shape;
  std::vector<unsigned> gsm, ucs2;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t length = rest[0] > 0 && rest[0] < ' ' ? 1 : Orvel::Text::printableLength(rest);
    if (length == 0) return shape;
    const std::string_view character = rest.substr(0, length);
    rest.remove_prefix(length);
    gsm.push_back(septets(character));
    ucs2.push_back(length == 4 ? 2 : 1);
    if (gsm.back() == 0 && shape.outside.find(character) == std::string::npos) shape.outside += character;
  }
  if (!text.empty()) shape.messages = shape.outside.empty() ? count(gsm, 160, 153) : count(ucs2, 70, 67);
  return shape;
}
