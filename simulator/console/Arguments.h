#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Simulator {

/// A word of a command line. A word with a quote in it is never an option.
struct Word {
  std::string text;
  bool quoted;
};

/// Splits a line into words at its blanks. Quotes keep blanks. In "..." a backslash escapes `"` and `\`, and
/// `\n` is a line feed; in '...' it means itself. False when a quote is not closed.
[[nodiscard]] bool splitLine(const std::string& line, std::vector<Word>& words);

/// The whole number in `text`; none when `text` is anything else, or not from `least` to `most`.
std::optional<unsigned> readNumber(const std::string& text, unsigned least = 0, unsigned most = 65535);

/// The arguments of a command. They are read by shapes, as help shows them, separated by ", ". A shape
/// consists of
///   api|tool          one of these words
///   N  TIMES  N,N     a whole number, one above 0, a list of whole numbers
///   TEXT  TEXT|off    a word in capitals stands for any word
///   TEXT...           one word or more, at the end
///   WORD...           the same, including words that look like options
///   [--x] [--x N]     an option, at any place; its value is a number, a list, or any word
/// A word in brackets may be missing, together with the words after it.
class Arguments {
 public:
  /// Reads the words from the second on. Returns an empty string, or one line on why no shape fits.
  [[nodiscard]] std::string read(const std::string& shapes, const std::vector<Word>& line);

  /// The words, without the options.
  const std::vector<std::string>& words() const { return words_; }
  /// The word at `place`, counting from 0; empty if there is none.
  std::string word(std::size_t place) const { return place < words_.size() ? words_[place] : ""; }
  unsigned number(std::size_t place, unsigned otherwise) const {
    return readNumber(word(place)).value_or(otherwise);
  }

  bool has(const std::string& option) const { return options_.count(option) != 0; }
  unsigned number(const std::string& option, unsigned otherwise) const {
    return readNumber(value(option)).value_or(otherwise);
  }
  std::vector<unsigned> numbers(const std::string& option) const;

 private:
  std::string value(const std::string& option) const;
  std::string readShape(const std::string& shape, const std::vector<Word>& line);

  std::vector<std::string> words_;
  std::map<std::string, std::string> options_;  ///< with their values
};

}  // namespace Simulator
