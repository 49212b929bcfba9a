#include "standalone/sms/Listing.h"

#include <cstdio>
#include <string_view>
#include <vector>

namespace Standalone {
namespace {
constexpr std::size_t partSize = 900;
constexpr char lineBreaks[] = "\r\n";
constexpr std::string_view messageMarker = "index";
// A prefix after which the daemon does not read a text as a header. The daemon decodes the prefix to nothing:
// it is the escape to the extension table, before a character that is in no GSM alphabet.
constexpr char noHeader[] = "\\x1b[";

// Removes the first character of `rest`, and returns its printed form. Escapes the "i" of "index".
std::string takePrinted(std::string_view& rest) {
  const char c = rest[0];
  const bool marker = rest.substr(0, messageMarker.size()) == messageMarker;
  std::size_t length = 1;
  while (length < rest.size() && (static_cast<unsigned char>(rest[length]) & 0xC0U) == 0x80) ++length;
  std::string character(rest.substr(0, length));
  rest.remove_prefix(length);
  if (marker) return "\\x69";
  switch (c) {
    case '\\':
      return "\\x1b/";
    case '"':
      return "\\\"";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\0':
      return "\uFFFD";
    default:
      return character;
  }
}

// Splits the printed form of a text into pieces of at most `partSize` bytes.
std::vector<std::string> pieces(std::string_view rest) {
  std::vector<std::string> all(1);
  while (!rest.empty()) {
    const std::string printed = takePrinted(rest);
    if (all.back().size() + printed.size() > partSize) all.emplace_back();
    all.back() += printed;
  }
  return all;
}

// Returns true if the daemon would read the second octet of the text as part of a concatenation header.
bool looksLikeHeader(const std::string& printed) {
  const std::size_t second = printed.compare(0, 1, "\\") == 0 ? 2 : 1;
  return printed.compare(0, 2, "\\x") != 0 && second < printed.size() && printed[second] == '\b';
}

// Returns a sender's name without markers of the listing, because a name cannot be escaped. A marker gets a
// capital letter. A line break or a NUL becomes a blank.
std::string printedSender(std::string name) {
  if (name.find_first_not_of(" \t\r\n") == std::string::npos) return "unknown";
  for (const char* const marker : {"index", "user-data:", "smsc-addr:"}) {
    for (std::size_t at = name.find(marker); at != std::string::npos; at = name.find(marker))
      name[at] = static_cast<char>(name[at] - 'a' + 'A');
  }
  for (char& c : name)
    if (c == '\0' || std::string_view(lineBreaks).find(c) != std::string_view::npos) c = ' ';
  return name;
}

std::string header(unsigned reference, std::size_t count, std::size_t number) {
  char text[40];
  std::snprintf(text, sizeof text, "\\x06\\x08\\x04\\x%02x\\x%02x\\x%02x\\x%02x", reference >> 8U,
                reference & 0xFFU, static_cast<unsigned>(count), static_cast<unsigned>(number));
  return text;
}
}  // namespace

std::string escaped(const std::string& text) {
  std::string printed;
  for (std::string_view rest = text; !rest.empty();) printed += takePrinted(rest);
  return (looksLikeHeader(printed) ? noHeader : "") + printed;
}

std::string Listing::block(const Message& message, const std::string& userData) {
  return "index: " + std::to_string(index_++) + "\nsmsc-addr: " + message.centre +
         "\naddr: " + printedSender(message.sender) + "\nuser-data: \"" + userData + "\"\n";
}

// Returns a reference that is unique in this listing. The reference depends only on the message: the daemon
// can therefore join parts in a truncated listing with parts in the next listing.
std::uint16_t Listing::referenceFor(const Message& message) {
  std::uint32_t hash = 2166136261U;  // FNV-1a
  for (const char c : message.sender + message.text)
    hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  auto reference = static_cast<std::uint16_t>(hash ^ (hash >> 16U));
  while (!references_.insert(reference).second) ++reference;
  return reference;
}

std::string Listing::print(const Message& message) {
  const std::vector<std::string> parts = pieces(message.text);
  if (parts.size() == 1) return block(message, escaped(message.text));
  const unsigned reference = referenceFor(message);
  std::string blocks;
  for (std::size_t i = 0; i < parts.size(); ++i)
    blocks += block(message, header(reference, parts.size(), i + 1) + parts[i]);
  return blocks;
}
}  // namespace Standalone
