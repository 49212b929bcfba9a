#include "support/Text.h"

#include <algorithm>

namespace Orvel::Text {

std::vector<std::string> split(const std::string& text, const std::string& separators, int limit) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (int left = limit; left > 0; --left) {
    const std::size_t end = left == 1 ? std::string::npos : text.find_first_of(separators, begin);
    pieces.push_back(text.substr(begin, end - begin));
    if (end == std::string::npos) break;
    begin = end + 1;
  }
  return pieces;
}

std::string trim(const std::string& text) {
  constexpr char whiteSpace[] = " \t\n\r\v\f";
  const std::size_t begin = text.find_first_not_of(whiteSpace);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

std::string toLowerCase(const std::string& text) {
  std::string lowered = text;
  for (char& c : lowered)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lowered;
}

}  // namespace Orvel::Text
