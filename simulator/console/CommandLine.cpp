#include "simulator/console/CommandLine.h"

namespace Simulator {
namespace {

// Reads a quoted stretch into `word`; `at` is on the opening quote and ends on the closing one.
bool readQuoted(const std::string& line, std::size_t& at, std::string& word) {
  const char quote = line[at];
  for (++at; at < line.size() && line[at] != quote; ++at) {
    const char next = quote == '"' && line[at] == '\\' && at + 1 < line.size() ? line[at + 1] : '\0';
    const bool escape = next == '"' || next == '\\' || next == 'n';
    word += next == 'n' ? '\n' : escape ? next : line[at];
    if (escape) ++at;
  }
  return at < line.size();
}

}  // namespace

bool splitLine(const std::string& line, std::vector<Word>& words) {
  words.clear();
  bool inWord = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const bool blank = line[at] == ' ' || line[at] == '\t';
    if (!blank && !inWord) words.push_back({"", false});
    inWord = !blank;
    if (blank) continue;
    Word& word = words.back();
    if (line[at] != '"' && line[at] != '\'') {
      word.text += line[at];
    } else {
      word.quoted = true;
      if (!readQuoted(line, at, word.text)) return false;
    }
  }
  return true;
}

}  // namespace Simulator
