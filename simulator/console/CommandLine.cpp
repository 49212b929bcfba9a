#include "simulator/console/CommandLine.h"

#include <sstream>

namespace Simulator {
namespace {

// Reads a quoted stretch into `word`; `at` is on the opening quote and ends on the closing one.
bool readQuoted(const std::string& line, std::size_t& at, std::string& word) {
  const char quote = line[at];
  for (++at; at < line.size() && line[at] != quote; ++at) {
    const bool escape = quote == '"' && line[at] == '\\' && at + 1 < line.size();
    if (escape && (line[at + 1] == '"' || line[at + 1] == '\\')) {
      word += line[++at];
    } else if (escape && line[at + 1] == 'n') {
      word += '\n';
      ++at;
    } else {
      word += line[at];
    }
  }
  return at < line.size();
}

}  // namespace

bool CommandLine::read(const std::string& line) {
  name_.clear();
  words_.clear();
  quoted_.clear();
  std::string word;
  bool inWord = false;
  bool quoted = false;
  for (std::size_t at = 0; at <= line.size(); ++at) {
    if (at == line.size() || line[at] == ' ' || line[at] == '\t') {
      if (inWord) {
        words_.push_back(word);
        quoted_.push_back(quoted);
      }
      word.clear();
      inWord = quoted = false;
    } else {
      inWord = true;
      if (line[at] == '"' || line[at] == '\'') {
        quoted = true;
        if (!readQuoted(line, at, word)) return false;
      } else {
        word += line[at];
      }
    }
  }
  if (!words_.empty()) {
    name_ = words_.front();
    erase(0, 1);
  }
  return true;
}

std::size_t CommandLine::find(const std::string& option) const {
  std::size_t at = 0;
  while (at < words_.size() && (quoted_[at] || words_[at] != option)) ++at;
  return at;
}

void CommandLine::erase(std::size_t first, std::size_t count) {
  const auto begin = static_cast<std::ptrdiff_t>(first);
  const auto end = begin + static_cast<std::ptrdiff_t>(count);
  words_.erase(words_.begin() + begin, words_.begin() + end);
  quoted_.erase(quoted_.begin() + begin, quoted_.begin() + end);
}

std::string CommandLine::rest(std::size_t first) const {
  std::string text;
  for (std::size_t i = first; i < words_.size(); ++i) text += (i == first ? "" : " ") + words_[i];
  return text;
}

bool CommandLine::takeFlag(const std::string& option) {
  const std::size_t found = find(option);
  if (found == words_.size()) return false;
  erase(found, 1);
  return true;
}

std::optional<std::string> CommandLine::take(const std::string& option) {
  const std::size_t found = find(option);
  if (found + 1 >= words_.size()) return std::nullopt;
  const std::string value = words_[found + 1];
  erase(found, 2);
  return value;
}

std::optional<unsigned> CommandLine::takeNumber(const std::string& option) {
  const std::size_t found = find(option);
  if (found + 1 >= words_.size()) return std::nullopt;
  const std::optional<unsigned> number = readNumber(words_[found + 1]);
  if (number) erase(found, 2);
  return number;
}

std::vector<unsigned> CommandLine::takeNumbers(const std::string& option) {
  std::vector<unsigned> numbers;
  const std::size_t found = find(option);
  if (found + 1 >= words_.size()) return numbers;
  std::istringstream pieces(words_[found + 1]);
  for (std::string piece; std::getline(pieces, piece, ',');) {
    const std::optional<unsigned> number = readNumber(piece);
    if (!number) return {};
    numbers.push_back(*number);
  }
  if (!numbers.empty()) erase(found, 2);
  return numbers;
}

std::string CommandLine::leftOption() const {
  for (std::size_t at = 0; at < words_.size(); ++at) {
    if (!quoted_[at] && words_[at].compare(0, 2, "--") == 0) return words_[at];
  }
  return "";
}

std::optional<unsigned> readNumber(const std::string& text) {
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  if (!digits || text.size() > 4) return std::nullopt;
  return static_cast<unsigned>(std::stoul(text));
}

}  // namespace Simulator
