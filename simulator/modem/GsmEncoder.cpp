#include "simulator/modem/GsmEncoder.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace Simulator {
namespace {
// 3GPP TS 23.038, 6.2.1: the default alphabet in the order of its codes 0x00 to 0x7F. At 0x1B, the code of
// the escape to the extension table, this string contains a DEL.
constexpr char defaultAlphabet[] =
    "@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x7fÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
// 6.2.1.1: the extension table.
constexpr std::pair<const char*, unsigned> extensions[] = {
    {"\f", 0x0A}, {"^", 0x14}, {"{", 0x28}, {"}", 0x29}, {"\\", 0x2F},
    {"[", 0x3C},  {"~", 0x3D}, {"]", 0x3E}, {"|", 0x40}, {"€", 0x65}};

constexpr unsigned wholeRoom = 160;  // the septets in a message of one part

std::string escaped(unsigned octet) {
  char text[5];
  std::snprintf(text, sizeof text, "\\x%02x", octet & 0xFFU);
  return text;
}

// Returns the UTF-8 character at `at`. The first byte gives the length of the character.
std::string characterAt(const std::string& text, std::size_t at) {
  const unsigned first = static_cast<unsigned char>(text[at]);
  if (first < 0x80) return text.substr(at, 1);
  if (first < 0xE0) return text.substr(at, 2);
  return text.substr(at, first < 0xF0 ? 3 : 4);
}

struct Piece {
  std::string printed;
  unsigned septets;
};
using Table = std::map<std::string, Piece>;

// Returns, for each character, how the tool prints the character and how many septets it has.
Table makeTable() {
  Table table;
  const std::string alphabet = defaultAlphabet;
  unsigned code = 0;
  for (std::size_t at = 0; at < alphabet.size(); ++code) {
    const std::string character = characterAt(alphabet, at);
    const bool asItself = code >= 0x20 && character == std::string(1, static_cast<char>(code));
    table[character] = {asItself ? character : escaped(code), 1};
    at += character.size();
  }
  table["\n"].printed = "\\n";
  table["\r"].printed = "\\r";
  table["\""].printed = "\\\"";
  table.erase("\x7f");
  for (const auto& [character, after] : extensions) {
    const bool isControl = after < 0x20;
    table[character] = {
        escaped(0x1B) + (isControl ? escaped(after) : std::string(1, static_cast<char>(after))), 2};
  }
  return table;
}

// Each text that veld does not receive unchanged, and what veld receives instead.
constexpr std::pair<const char*, const char*> changed[] = {
    {"^", "\"^\" becomes \"x14\": the tool prints \\x1b\\x14, and veld removes \\x1b and the next \\."},
    {"\f",
     "A form feed becomes \"x0a\": the tool prints \\x1b\\x0a, and veld removes \\x1b and the next \\."},
    {"|", "\"|\" becomes \"?\", because veld does not decode this character."},
    {"index", "The text contains \"index\": veld reads this word as the beginning of the next message."},
};

std::string header(const GsmEncoder::Options& options, unsigned count, unsigned number) {
  const unsigned reference = options.reference;
  const std::vector<unsigned> wide{6, 8, 4, reference >> 8, reference, count, number};
  // A fill bit follows these six octets, because the text begins at a septet. The tool prints it as \x00.
  const std::vector<unsigned> narrow{5, 0, 3, reference, count, number, 0};
  std::string text;
  for (const unsigned octet : options.wideReference ? wide : narrow) text += escaped(octet);
  return text;
}

// Divides the text into at least `wanted` parts of at most `room` septets.
std::vector<std::string> divide(const std::vector<Piece>& pieces, unsigned room, std::size_t wanted) {
  const std::size_t perPart = (pieces.size() + wanted - 1) / wanted;
  std::vector<std::string> parts(1);
  unsigned used = 0;
  std::size_t inPart = 0;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    // The remaining characters must give each remaining part at least one character.
    const bool leavesTooFew = inPart > 0 && pieces.size() - i + parts.size() <= wanted;
    const bool isComplete = wanted > 1 && (inPart >= perPart || leavesTooFew);
    if (used + pieces[i].septets > room || isComplete) {
      parts.emplace_back();
      used = 0;
      inPart = 0;
    }
    parts.back() += pieces[i].printed;
    used += pieces[i].septets;
    ++inPart;
  }
  return parts;
}

// Appends the characters of `text` to `pieces`. Returns an empty string, or one line about the first error.
std::string translate(const std::string& text, std::vector<Piece>& pieces) {
  static const Table table = makeTable();
  for (std::size_t at = 0; at < text.size();) {
    const std::string character = characterAt(text, at);
    const auto found = table.find(character);
    if (found == table.end())
      return "The GSM 7-bit alphabet has no \"" + character + "\" (byte " + std::to_string(at + 1) +
             "). A network would send this text as UCS-2, which veld does not decode.";
    pieces.push_back(found->second);
    at += character.size();
  }
  return "";
}

bool beginsWithFill(const std::string& part) { return part.compare(0, 4, escaped(0)) == 0; }
}  // namespace

std::string GsmEncoder::encode(const std::string& text, const Options& options) {
  notes.clear();
  std::vector<Piece> pieces;
  if (const std::string problem = translate(text, pieces); !problem.empty()) return problem;
  if (options.parts > 1 && options.parts > pieces.size())
    return "A text of " + std::to_string(pieces.size()) + " characters cannot fill " +
           std::to_string(options.parts) + " parts.";
  unsigned total = 0;
  for (const Piece& piece : pieces) total += piece.septets;
  const bool divided = total > wholeRoom || options.parts > 1;
  const unsigned partRoom = options.wideReference ? 152 : 153;
  parts = divide(pieces, divided ? partRoom : wholeRoom, std::max(1U, options.parts));
  const auto count = static_cast<unsigned>(parts.size());
  if (count > 255) return "The text needs " + std::to_string(count) + " parts; a message has at most 255.";
  for (const auto& [found, note] : changed)
    if (text.find(found) != std::string::npos) notes.emplace_back(note);
  if (!divided) return "";
  if (options.wideReference && std::any_of(parts.begin(), parts.end(), beginsWithFill))
    notes.emplace_back("A part begins with \"@\": veld reads this character as a fill bit of the header.");
  for (unsigned number = 1; number <= count; ++number)
    parts[number - 1].insert(0, header(options, count, number));
  return "";
}
}  // namespace Simulator
