#include "simulator/console/Arguments.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace Simulator {
namespace {

// Appends a quoted text to `word`. `at` moves from the opening to the closing quote. False without a closing
// quote.
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

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
  return pieces;
}

bool isAnyWord(const std::string& kind) {
  return kind.find_first_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

// Why `text` is not of this kind; empty if it is.
std::string wrongIn(const std::string& text, const std::string& kind) {
  if (kind == "N" && !readNumber(text)) return "\"" + text + "\" is not a whole number from 0 to 65535.";
  if (kind == "TIMES" && !readNumber(text, 1))
    return "\"" + text + "\" is not a whole number from 1 to 65535.";
  if (kind == "N,N") {
    const std::vector<std::string> pieces = split(text, ',');
    const bool good =
        std::all_of(pieces.begin(), pieces.end(), [](const auto& piece) { return readNumber(piece); });
    return good && !pieces.empty() ? "" : "\"" + text + "\" is not a list of whole numbers such as 2,1.";
  }
  const std::vector<std::string> choices = split(kind, '|');
  const auto fits = [&text](const std::string& choice) { return choice == text || isAnyWord(choice); };
  return std::any_of(choices.begin(), choices.end(), fits) ? "" : "\"" + text + "\" is not " + kind + ".";
}

struct Shape {
  std::vector<std::string> kinds;
  std::size_t least = 0;                       // the number of words that must be there
  bool goesOn = false;                         // all further words are of the last kind
  bool takesAll = false;                       // words that look like options count as words
  std::map<std::string, std::string> options;  // with the kinds of their values
};

Shape parse(const std::string& text) {
  Shape shape;
  std::istringstream tokens(text);
  for (std::string token; tokens >> token;) {
    const bool optional = token.front() == '[';
    if (optional) token.erase(0, 1);
    if (token.compare(0, 2, "--") == 0) {
      std::string kind;
      if (token.back() != ']') tokens >> kind;
      (kind.empty() ? token : kind).pop_back();
      shape.options[token] = kind;
      continue;
    }
    if (optional) token.pop_back();
    shape.goesOn = token.size() > 3 && token.compare(token.size() - 3, 3, "...") == 0;
    shape.kinds.push_back(shape.goesOn ? token.substr(0, token.size() - 3) : token);
    shape.takesAll = token == "WORD...";
    if (!optional) shape.least = shape.kinds.size();
  }
  return shape;
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

std::optional<unsigned> readNumber(const std::string& text, unsigned least, unsigned most) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || at != end || error != std::errc() || number < least || number > most)
    return std::nullopt;
  return number;
}

std::string Arguments::read(const std::string& shapes, const std::vector<Word>& line) {
  std::string problem;
  std::size_t understood = 0;
  for (std::size_t begin = 0; begin <= shapes.size();) {
    const std::size_t end = std::min(shapes.find(", ", begin), shapes.size());
    const std::string wrong = readShape(shapes.substr(begin, end - begin), line);
    if (wrong.empty()) return "";
    // Report the shape that fits most of the words.
    if (problem.empty() || words_.size() > understood) problem = wrong;
    understood = std::max(understood, words_.size());
    begin = end + 2;
  }
  return problem;
}

std::string Arguments::readShape(const std::string& text, const std::vector<Word>& line) {
  const Shape shape = parse(text);
  words_.clear();
  options_.clear();
  for (std::size_t i = 1; i < line.size(); ++i) {
    const std::string& word = line[i].text;
    if (!line[i].quoted && !shape.takesAll && word.compare(0, 2, "--") == 0) {
      const auto option = shape.options.find(word);
      if (option == shape.options.end()) return "There is no option " + word + ".";
      const std::string& kind = option->second;
      if (!kind.empty() && ++i == line.size()) return std::string(word).append(" wants ").append(kind) + ".";
      const std::string wrong = kind.empty() ? "" : wrongIn(line[i].text, kind);
      if (!wrong.empty()) return std::string(word).append(": ").append(wrong);
      options_[word] = line[i].text;
      continue;
    }
    if (words_.size() >= shape.kinds.size() && !shape.goesOn) return "\"" + word + "\" is one word too many.";
    const std::string& kind = shape.kinds[std::min(words_.size(), shape.kinds.size() - 1)];
    if (const std::string wrong = wrongIn(word, kind); !wrong.empty()) return wrong;
    words_.push_back(word);
  }
  return words_.size() >= shape.least ? "" : shape.kinds[words_.size()] + " is missing.";
}

std::string Arguments::value(const std::string& option) const {
  const auto found = options_.find(option);
  return found == options_.end() ? "" : found->second;
}

std::vector<unsigned> Arguments::numbers(const std::string& option) const {
  std::vector<unsigned> all;
  for (const std::string& piece : split(value(option), ',')) all.push_back(readNumber(piece).value_or(0));
  return all;
}

}  // namespace Simulator
