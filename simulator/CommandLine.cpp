#include "simulator/CommandLine.h"

#include <algorithm>
#include <sstream>

namespace simulator {
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
  std::string word;
  bool inWord = false;
  for (std::size_t at = 0; at <= line.size(); ++at) {
    if (at == line.size() || line[at] == ' ' || line[at] == '\t') {
      if (inWord) words_.push_back(word);
      word.clear();
      inWord = false;
    } else {
      inWord = true;
      if (line[at] == '"' || line[at] == '\'') {
        if (!readQuoted(line, at, word)) return false;
      } else {
        word += line[at];
      }
    }
  }
  if (!words_.empty()) {
    name_ = words_.front();
    words_.erase(words_.begin());
  }
  return true;
}

std::string CommandLine::rest(std::size_t first) const {
  std::string text;
  for (std::size_t i = first; i < words_.size(); ++i) text += (i == first ? "" : " ") + words_[i];
  return text;
}

bool CommandLine::takeFlag(const std::string& option) {
  const auto found = std::find(words_.begin(), words_.end(), option);
  if (found == words_.end()) return false;
  words_.erase(found);
  return true;
}

std::optional<std::string> CommandLine::take(const std::string& option) {
  const auto found = std::find(words_.begin(), words_.end(), option);
  if (found == words_.end() || found + 1 == words_.end()) return std::nullopt;
  const std::string value = *(found + 1);
  words_.erase(found, found + 2);
  return value;
}

std::optional<unsigned> CommandLine::takeNumber(const std::string& option) {
  const auto found = std::find(words_.begin(), words_.end(), option);
  if (found == words_.end() || found + 1 == words_.end()) return std::nullopt;
  const std::optional<unsigned> number = readNumber(*(found + 1));
  if (number) words_.erase(found, found + 2);
  return number;
}

std::vector<unsigned> CommandLine::takeNumbers(const std::string& option) {
  std::vector<unsigned> numbers;
  const auto found = std::find(words_.begin(), words_.end(), option);
  if (found == words_.end() || found + 1 == words_.end()) return numbers;
  std::istringstream pieces(*(found + 1));
  for (std::string piece; std::getline(pieces, piece, ',');) {
    const std::optional<unsigned> number = readNumber(piece);
    if (!number) return {};
    numbers.push_back(*number);
  }
  if (!numbers.empty()) words_.erase(found, found + 2);
  return numbers;
}

std::string CommandLine::leftOption() const {
  for (const std::string& word : words_) {
    if (word.compare(0, 2, "--") == 0 && word.find(' ') == std::string::npos) return word;
  }
  return "";
}

std::optional<unsigned> readNumber(const std::string& text) {
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  if (!digits || text.size() > 4) return std::nullopt;
  return static_cast<unsigned>(std::stoul(text));
}

}  // namespace simulator
