#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Simulator {
/// A word of a command line. A quoted word is never an option.
struct Word {
  std::string text;
  bool quoted;
};

/// Splits a line into words at its blanks, but not at blanks in quotes. In double quotes, `\"`, `\\` and `\n`
/// mean a quote, a backslash and a line feed. Returns false if a closing quote is missing.
[[nodiscard]] bool splitLine(const std::string& line, std::vector<Word>& words);

/// Returns the whole number from `least` to `most` in `text`; nullopt if `text` is anything else.
std::optional<unsigned> readNumber(const std::string& text, unsigned least = 0, unsigned most = 65535);

/// Reads the arguments of a command by its syntax, which "help" prints. A syntax consists of forms with ", "
/// between them. A command line must fit one form. A form is a list of
///   api|tool          one of these words
///   N  TIMES  N,N     a whole number, a whole number above 0, a list of whole numbers
///   TEXT  TEXT|off    any word, because TEXT is in capitals
///   TEXT...           one or more words of any kind, at the end
///   WORD...           one or more words of any kind, at the end; here, --x is a word and not an option
///   [--x] [--x N]     an option without a value, and an option with a value; both may stand anywhere
/// A word in brackets is optional. If it is missing, the words after it must be missing, too.
class Arguments {
 public:
  /// Reads the words after the command's name. Returns an empty string, or the problem if no form fits.
  [[nodiscard]] std::string read(const std::string& syntax, const std::vector<Word>& line);

  const std::vector<std::string>& words() const { return words_; }  ///< all words that are not options
  /// Returns the word at `place`, counted from 0; an empty string if there is no such word.
  std::string word(std::size_t place) const { return place < words_.size() ? words_[place] : ""; }
  /// Returns the number at `place` or of `option`; `otherwise` if there is no such word.
  unsigned number(std::size_t place, unsigned otherwise) const {
    return readNumber(word(place)).value_or(otherwise);
  }
  unsigned number(const std::string& option, unsigned otherwise) const {
    return readNumber(value(option)).value_or(otherwise);
  }
  bool has(const std::string& option) const { return options_.count(option) != 0; }
  std::vector<unsigned> numbers(const std::string& option) const;

 private:
  std::string value(const std::string& option) const;
  std::string readForm(const std::string& text, const std::vector<Word>& line);

  std::vector<std::string> words_;
  std::map<std::string, std::string> options_;  ///< the options and their values
};
}  // namespace Simulator
