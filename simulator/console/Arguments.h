#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Simulator {

/// A word of a command line. One with a quote in it is no option, whatever it looks like.
struct Word {
  std::string text;
  bool quoted;
};

/// Splits a line at blanks into its words. Quotes keep blanks together: in "..." a backslash makes the next
/// `"` or `\` plain and `\n` a line feed; nothing is special in '...'. False when a quote is left open.
[[nodiscard]] bool splitLine(const std::string& line, std::vector<Word>& words);

/// A whole number; none when `text` is anything else or it is not from `least` to `most`.
std::optional<unsigned> readNumber(const std::string& text, unsigned least = 0, unsigned most = 65535);

/// What a command was given, read by the shapes in which it may be written, as help shows them and separated
/// by ", ". A shape consists of
///   api|tool          one of these words
///   N  TIMES  N,N     a whole number, one that is not 0, a list of them
///   TEXT  TEXT|off    any word in capitals stands for any word
///   TEXT...           one word or more, at the end
///   WORD...           the same, and options are such words, too
///   [--x] [--x N]     an option, which may stand anywhere; its value is a number, a list, or any word
/// and a word in brackets may be missing, with those behind it.
class Arguments {
 public:
  /// Reads the words from the second on by the shape that fits best. What it gives is empty, or says in one
  /// line why none fits.
  [[nodiscard]] std::string read(const std::string& shapes, const std::vector<Word>& line);

  /// The words, without the options.
  const std::vector<std::string>& words() const { return words_; }
  /// The word at `place`; empty when there is none.
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
