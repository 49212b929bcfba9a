#include "standalone/api/Reply.h"

#include <string_view>
#include <vector>

#include "support/Text.h"
#include "veldctl/ShortMessage.h"

namespace Standalone {
namespace {
constexpr unsigned mostMessages = 3;
constexpr std::size_t mostCharacters = mostMessages * 153;  // three parts hold as many in the GSM alphabet

// Returns the characters of `text`, but at most `mostCharacters`.
std::vector<std::string> charactersOf(std::string_view text) {
  std::vector<std::string> characters;
  while (!text.empty() && characters.size() < mostCharacters) {
    const std::size_t length = Orvel::Text::printableLength(text);
    if (length > 0)
      characters.emplace_back(text.substr(0, length));
    else
      characters.emplace_back(text[0] == '\n' ? "\n" : "?");
    text.remove_prefix(characters.back().size());
  }
  return characters;
}
}  // namespace

std::string replyText(const std::string& output, bool succeeded) {
  const std::string whole = Orvel::Text::trim(output);
  if (whole.empty()) return succeeded ? "done" : "failed";
  std::string reply;
  for (const std::string& character : charactersOf(whole)) {
    if (ShortMessage::encodingOf(reply + character).messages > mostMessages) break;
    reply += character;
  }
  return reply;
}
}  // namespace Standalone
