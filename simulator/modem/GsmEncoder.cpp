#include "simulator/modem/GsmEncoder.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace Simulator {
namespace {

// 3GPP TS 23.038, 6.2.1: the default alphabet, in the order of its codes 0x00 to 0x7F. The escape to the
// extension table, 0x1B, is no character and stands as a DEL.
constexpr char defaultAlphabet[] =
    "@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x7fÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
// 6.2.1.1: the extension table.
constexpr struct {
  const char* character;
  unsigned code;
} extensions[] = {{"\f", 0x0A}, {"^", 0x14}, {"{", 0x28}, {"}", 0x29}, {"\\", 0x2F},
                  {"[", 0x3C},  {"~", 0x3D}, {"]", 0x3E}, {"|", 0x40}, {"€", 0x65}};

std::string escaped(unsigned octet) {
  char text[5];
  std::snprintf(text, sizeof text, "\\x%02x", octet & 0xFFU);
  return text;
}

// The UTF-8 character at `at`, as long as its first byte says.
std::string characterAt(const std::string& text, std::size_t at) {
  const unsigned lead = static_cast<unsigned char>(text[at]);
  return text.substr(at, lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4);
}

struct Piece {
  std::string printed;
  unsigned septets;
};
using Table = std::map<std::string, Piece>;

// How the tool prints each character.
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
  for (const auto& [character, of] : extensions)
    table[character] = {escaped(0x1B) + (of < 0x20 ? escaped(of) : std::string(1, static_cast<char>(of))), 2};
  return table;
}

std::string header(const GsmEncoder::Options& options, unsigned count, unsigned number) {
  const unsigned reference = options.reference;
  if (options.wideReference) {
    return escaped(6) + escaped(8) + escaped(4) + escaped(reference >> 8) + escaped(reference) +
           escaped(count) + escaped(number);
  }
  // Six octets of header leave one bit to the next septet, and the tool prints this fill.
  return escaped(5) + escaped(0) + escaped(3) + escaped(reference) + escaped(count) + escaped(number) +
         escaped(0);
}

}  // namespace

void GsmEncoder::addNotes(const std::string& text, bool wideParts) {
  struct Note {
    const char* found;
    const char* text;
  };
  constexpr Note noteTable[] = {
      {"^",
       "\"^\" arrives as \"x14\": veld drops the escape before a code that the tool does not print as a "
       "character."},
      {"\f", "A form feed arrives as \"x0a\", for the same reason."},
      {"|", "\"|\" arrives as \"?\": veld has no way to read it."},
      {"index",
       "The text holds \"index\", which veld takes for the head of the next message in the listing."},
  };
  for (const Note& note : noteTable) {
    if (text.find(note.found) != std::string::npos) notes_.emplace_back(note.text);
  }
  if (!wideParts) return;
  for (const std::string& part : parts_) {
    if (part.compare(28, 4, "\\x00") != 0) continue;
    notes_.emplace_back("A part begins with \"@\", which veld takes for the fill after the header.");
    return;
  }
}

bool GsmEncoder::encode(const std::string& text, const Options& options) {
  parts_.clear();
  notes_.clear();
  problem_.clear();
  static const Table table = makeTable();
  std::vector<Piece> pieces;
  unsigned total = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::string character = characterAt(text, at);
    const auto found = table.find(character);
    if (found == table.end()) {
      problem_ = "The GSM 7-bit alphabet has no \"" + character + "\" (byte " + std::to_string(at + 1) +
                 "): a network would send this text as UCS-2, which veld does not read.";
      return false;
    }
    pieces.push_back(found->second);
    total += found->second.septets;
    at += character.size();
  }

  const bool divided = total > 160 || options.parts > 1;
  if (options.parts > 1 && options.parts > pieces.size()) {
    problem_ = "A text of " + std::to_string(pieces.size()) + " characters cannot make " +
               std::to_string(options.parts) + " parts.";
    return false;
  }
  const unsigned room = !divided ? 160 : options.wideReference ? 152 : 153;
  const std::size_t wanted = std::max(1U, options.parts);
  const std::size_t perPart = (pieces.size() + wanted - 1) / wanted;
  std::string part;
  std::size_t used = 0;
  std::size_t inPart = 0;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    // What is left must still give each part that is asked for a character of its own.
    const bool asked =
        wanted > 1 && (inPart >= perPart || (inPart > 0 && pieces.size() - i < wanted - parts_.size()));
    if (used + pieces[i].septets > room || asked) {
      parts_.push_back(part);
      part.clear();
      used = inPart = 0;
    }
    part += pieces[i].printed;
    used += pieces[i].septets;
    ++inPart;
  }
  parts_.push_back(part);
  if (parts_.size() > 255) {
    problem_ = "The text needs " + std::to_string(parts_.size()) + " parts, and a message has 255 at most.";
    return false;
  }
  const auto count = static_cast<unsigned>(parts_.size());
  for (unsigned number = 1; divided && number <= count; ++number) {
    parts_[number - 1].insert(0, header(options, count, number));
  }
  addNotes(text, divided && options.wideReference);
  return true;
}

}  // namespace Simulator
