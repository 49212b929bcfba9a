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

/// Splits a line into words at its blanks. Blanks in quotes belong to a word. In "..." a backslash escapes
/// `"` and `\`, and `\n` is a line feed; in '...' it has no special meaning. False if a quote is not closed.
[[nodiscard]] bool splitLine(const std::string& line, std::vector<Word>& words);

/// Reads a whole number from `least` to `most`; nullopt for any other text.
std::optional<unsigned> readNumber(const std::string& text, unsigned least = 0, unsigned most = 65535);

/// The arguments of a command. Its shapes, separated by ", ", define them; help prints the shapes. A shape
/// consists of
///   api|tool          one of these words
///   N  TIMES  N,N     a whole number, a whole number above 0, a list of whole numbers
///   TEXT  TEXT|off    a word in capitals stands for any word
///   TEXT...           one word or more, at the end
///   WORD...           the same, including words that look like options
///   [--x] [--x N]     an option at any place, without a value, or with a number, a list or any word
/// A word in brackets may be missing, together with the words after it.
class Arguments {
 public:
  /// Reads the words after the first. Returns an empty string, or one line that says why no shape fits.
  [[nodiscard]] std::string read(const std::string& shapes, const std::vector<Word>& line);

  const std::vector<std::string>& words() const { return words_; }  ///< without the options
  /// Returns the word at `place`, counting from 0; empty if there is none.
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
