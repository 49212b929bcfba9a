#include "simulator/modem/GsmEncoder.h"

#include <algorithm>
#include <cstdio>

namespace Simulator {
namespace {

// 3GPP TS 23.038, 6.2.1: the default alphabet, in the order of its codes 0x00 to 0x7F. The escape to the
// extension table, 0x1B, is no character and stands as a NUL.
constexpr char32_t defaultAlphabet[129] =
    U"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\0ÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    U"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";

struct Extension {
  char32_t character;
  unsigned code;
};
// 3GPP TS 23.038, 6.2.1.1: the extension table.
constexpr Extension extensions[] = {{U'\f', 0x0A}, {U'^', 0x14}, {U'{', 0x28}, {U'}', 0x29}, {U'\\', 0x2F},
                                    {U'[', 0x3C},  {U'~', 0x3D}, {U']', 0x3E}, {U'|', 0x40}, {U'€', 0x65}};

std::string escaped(unsigned octet) {
  char text[5];
  std::snprintf(text, sizeof text, "\\x%02x", octet & 0xFFU);
  return text;
}

// Reads one character at `at` and moves on; false when the bytes there are not UTF-8.
bool nextCharacter(const std::string& text, std::size_t& at, char32_t& character) {
  const unsigned lead = static_cast<unsigned char>(text[at++]);
  const unsigned more = lead < 0x80   ? 0
                        : lead < 0xC2 ? 9
                        : lead < 0xE0 ? 1
                        : lead < 0xF0 ? 2
                        : lead < 0xF5 ? 3
                                      : 9;
  if (more > text.size() - at) return false;
  character = more == 0 ? lead : lead & (0x3FU >> more);
  for (unsigned i = 0; i < more; ++i) {
    const unsigned next = static_cast<unsigned char>(text[at++]);
    if ((next & 0xC0U) != 0x80) return false;
    character = character << 6 | (next & 0x3FU);
  }
  return true;
}

// A character of the default alphabet as the tool prints it, empty if it is none.
std::string printDefault(char32_t character) {
  const auto* found = std::find(defaultAlphabet, defaultAlphabet + 128, character);
  if (found == defaultAlphabet + 128 || character == 0) return "";
  const auto code = static_cast<unsigned>(found - defaultAlphabet);
  if (character == U'\n') return "\\n";
  if (character == U'\r') return "\\r";
  if (character == U'"') return "\\\"";
  const bool asItself = code == character && code >= 0x20;
  return asItself ? std::string(1, static_cast<char>(code)) : escaped(code);
}

std::string printExtension(char32_t character) {
  for (const Extension& extension : extensions) {
    if (extension.character != character) continue;
    const bool printable = extension.code >= 0x20;
    return escaped(0x1B) +
           (printable ? std::string(1, static_cast<char>(extension.code)) : escaped(extension.code));
  }
  return "";
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

bool GsmEncoder::readPieces(const std::string& text, std::vector<Piece>& pieces) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    char32_t character = 0;
    if (!nextCharacter(text, at, character)) {
      problem_ = "The text is not UTF-8 at byte " + std::to_string(start + 1) + ".";
      return false;
    }
    if (const std::string printed = printDefault(character); !printed.empty()) {
      pieces.push_back({printed, 1});
    } else if (const std::string extension = printExtension(character); !extension.empty()) {
      pieces.push_back({extension, 2});
    } else {
      problem_ = "The GSM 7-bit alphabet has no \"" + text.substr(start, at - start) +
                 "\": a network would send this text as UCS-2, which veld does not read.";
      return false;
    }
  }
  return true;
}

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
  std::vector<Piece> pieces;
  if (!readPieces(text, pieces)) return false;
  unsigned total = 0;
  for (const Piece& piece : pieces) total += piece.septets;

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
