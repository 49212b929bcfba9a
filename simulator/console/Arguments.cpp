#include "simulator/console/Arguments.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace Simulator {
namespace {
// Returns the character at `at`. For an escape sequence, returns its meaning, and moves `at` to its end.
char unescaped(const std::string& line, std::size_t& at) {
  const char next = at + 1 < line.size() ? line[at + 1] : '\0';
  if (line[at] != '\\' || (next != '"' && next != '\\' && next != 'n')) return line[at];
  ++at;
  return next == 'n' ? '\n' : next;
}

// Appends a quoted text to `word`. Moves `at` to the closing quote; returns false if this quote is missing.
bool readQuoted(const std::string& line, std::size_t& at, std::string& word) {
  const char quote = line[at];
  for (++at; at < line.size() && line[at] != quote; ++at)
    word += quote == '"' ? unescaped(line, at) : line[at];
  return at < line.size();
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
  return pieces;
}

bool isPlaceholder(const std::string& kind) {
  return kind.find_first_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

bool isList(const std::string& text) {
  const std::vector<std::string> pieces = split(text, ',');
  const auto isNumber = [](const std::string& piece) { return readNumber(piece).has_value(); };
  return !pieces.empty() && std::all_of(pieces.begin(), pieces.end(), isNumber);
}

bool isChoice(const std::string& text, const std::string& kind) {
  const std::vector<std::string> choices = split(kind, '|');
  const auto fits = [&text](const std::string& choice) { return choice == text || isPlaceholder(choice); };
  return std::any_of(choices.begin(), choices.end(), fits);
}

// Returns why `text` is not of this kind; an empty string if it is.
std::string problemOf(const std::string& text, const std::string& kind) {
  const std::string isNot = "\"" + text + "\" is not ";
  if (kind == "N") return readNumber(text) ? "" : isNot + "a whole number from 0 to 65535.";
  if (kind == "TIMES") return readNumber(text, 1) ? "" : isNot + "a whole number from 1 to 65535.";
  if (kind == "N,N") return isList(text) ? "" : isNot + "a list of whole numbers such as 2,1.";
  return isChoice(text, kind) ? "" : isNot + kind + ".";
}

struct Form {
  std::vector<std::string> kinds;              // the kinds of the words
  std::size_t least = 0;                       // the number of words that are not optional
  bool repeats = false;                        // true: more words of the last kind may follow
  bool hasNoOptions = false;                   // true: --x is a word
  std::map<std::string, std::string> options;  // the options and the kinds of their values
};

// Adds an option. `token` is "[--x]", or "[--x" if the next token is the kind of the value, such as "N]".
void addOption(Form& form, const std::string& token, std::istream& tokens) {
  std::string kind = "]";
  if (token.back() != ']') tokens >> kind;
  kind.pop_back();
  form.options[token.substr(1, token.find(']') - 1)] = kind;
}

void addWord(Form& form, std::string token) {
  const bool optional = token.front() == '[';
  if (optional) token = token.substr(1, token.size() - 2);
  form.hasNoOptions = token == "WORD...";
  form.repeats = token.size() > 3 && token.compare(token.size() - 3, 3, "...") == 0;
  if (form.repeats) token.resize(token.size() - 3);
  form.kinds.push_back(token);
  if (!optional) form.least = form.kinds.size();
}

Form parse(const std::string& text) {
  Form form;
  std::istringstream tokens(text);
  for (std::string token; tokens >> token;) {
    if (token.compare(0, 3, "[--") == 0)
      addOption(form, token, tokens);
    else
      addWord(form, token);
  }
  return form;
}

// Reads the option at `at`. Moves `at` to the value if there is one. Returns an empty string or the problem.
std::string readOption(const Form& form, const std::vector<Word>& line, std::size_t& at,
                       std::map<std::string, std::string>& options) {
  const std::string& name = line[at].text;
  const auto option = form.options.find(name);
  if (option == form.options.end()) return "There is no option " + name + ".";
  options[name] = "";
  const std::string& kind = option->second;
  if (kind.empty()) return "";
  if (++at == line.size()) return name + " needs " + kind + ".";
  options[name] = line[at].text;
  const std::string problem = problemOf(line[at].text, kind);
  return problem.empty() ? "" : name + ": " + problem;
}

// Appends the word to `words`. Returns an empty string or the problem.
std::string readWord(const Form& form, const std::string& word, std::vector<std::string>& words) {
  if (words.size() >= form.kinds.size() && !form.repeats) return "\"" + word + "\" is one word too many.";
  const std::string problem = problemOf(word, form.kinds[std::min(words.size(), form.kinds.size() - 1)]);
  if (problem.empty()) words.push_back(word);
  return problem;
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

std::string Arguments::read(const std::string& syntax, const std::vector<Word>& line) {
  std::string problem;
  std::size_t mostWords = 0;
  for (std::size_t begin = 0; begin <= syntax.size();) {
    const std::size_t end = std::min(syntax.find(", ", begin), syntax.size());
    const std::string next = readForm(syntax.substr(begin, end - begin), line);
    if (next.empty()) return "";
    // If no form fits, reports the problem of the form that accepts the most words.
    if (problem.empty() || words_.size() > mostWords) problem = next;
    mostWords = std::max(mostWords, words_.size());
    begin = end + 2;
  }
  return problem;
}

std::string Arguments::readForm(const std::string& text, const std::vector<Word>& line) {
  const Form form = parse(text);
  words_.clear();
  options_.clear();
  for (std::size_t at = 1; at < line.size(); ++at) {
    const bool isOption = !line[at].quoted && !form.hasNoOptions && line[at].text.compare(0, 2, "--") == 0;
    const std::string problem =
        isOption ? readOption(form, line, at, options_) : readWord(form, line[at].text, words_);
    if (!problem.empty()) return problem;
  }
  return words_.size() >= form.least ? "" : form.kinds[words_.size()] + " is missing.";
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
