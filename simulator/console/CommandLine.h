#pragma once

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

}  // namespace Simulator
