#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Simulator {

/// What a command answers: its output, or in one line what was wrong and what would be right.
struct Answer {
  bool good = true;
  std::string text;
};
inline Answer wrong(const std::string& text) { return {false, text}; }

/// One command line, split at blanks. Quotes keep blanks together: in "..." a backslash makes the next `"` or
/// `\` plain and `\n` a line feed; nothing is special in '...'. A word with a quote in it is no option.
class CommandLine {
 public:
  /// False when a quote is left open; the object is then of no use.
  [[nodiscard]] bool read(const std::string& line);

  /// Empty for a blank line.
  const std::string& name() const { return name_; }

  /// The words after the name that are left: options that were taken are gone from them.
  const std::vector<std::string>& words() const { return words_; }
  /// The words from `first` on, separated by single blanks.
  std::string rest(std::size_t first) const;

  /// Takes an option without a value out of the words; whether it was there.
  bool takeFlag(const std::string& option);
  /// Takes an option and the word after it; none when the option, or its value, is missing.
  std::optional<std::string> take(const std::string& option);
  /// The same for a whole number between 0 and 9999; a value that is none leaves the option where it is.
  std::optional<unsigned> takeNumber(const std::string& option);
  /// The same for a list of whole numbers, as in 2,1.
  std::vector<unsigned> takeNumbers(const std::string& option);
  /// The first word that looks like an option: not known, or its value was not understood. Empty if none.
  std::string leftOption() const;

 private:
  std::size_t find(const std::string& option) const;  // the number of words when it is not there
  void erase(std::size_t first, std::size_t count);

  std::string name_;
  std::vector<std::string> words_;
  std::vector<bool> quoted_;  // whether the word of the same place was
};

/// A whole number between 0 and 9999.
std::optional<unsigned> readNumber(const std::string& text);

}  // namespace Simulator
