#include "simulator/console/Arguments.h"
#include "tests/Rows.h"

using Simulator::Arguments;
using Simulator::splitLine;
using Simulator::Word;

namespace {
std::vector<Word> wordsOf(const std::string& line) {
  std::vector<Word> words;
  return splitLine(line, words) ? words : std::vector<Word>{{"a quote is left open", false}};
}

// Expected: the words, in <> if they are unquoted and in [] if they are quoted.
const Row<const char*, std::string> lineRows[] = {
    {"Plain", "queue +49 text", "<queue><+49><text>"},
    {"Blanks", " \tqueue  +49\t text ", "<queue><+49><text>"},
    {"DoubleQuotes", "queue \"two  words\"", "<queue>[two  words]"},
    {"SingleQuotes", "queue 'a \"b\" \\n'", "<queue>[a \"b\" \\n]"},
    {"Escapes", R"(queue "\"\\\n\x")", "<queue>[\"\\\n\\x]"},
    {"EmptyWord", "queue \"\"", "<queue>[]"},
    {"QuoteInsideAWord", "queue a\"b c\"d", "<queue>[ab cd]"},
    {"OpenSingleQuote", "queue 'text", "<a quote is left open>"},
};
TEST_ROWS(Line, IsSplit, lineRows) {
  std::string all;
  for (const Word& word : wordsOf(GetParam().given))
    all += (word.quoted ? "[" : "<") + word.text + (word.quoted ? "]" : ">");
  EXPECT_EQ(all, GetParam().expected);
}

TEST(Arguments, SeparatesOptionsFromWords) {
  Arguments given;
  ASSERT_EQ(given.read("NUMBER TEXT [--parts N] [--16-bit] [--order N,N]",
                       wordsOf("receive --parts 2 +49 --16-bit \"--parts\" --order 2,1")),
            "");
  EXPECT_EQ(given.words(), (std::vector<std::string>{"+49", "--parts"}));
  EXPECT_EQ(given.number("--parts", 7), 2U);
  EXPECT_TRUE(given.has("--16-bit"));
  EXPECT_EQ(given.numbers("--order"), (std::vector<unsigned>{2, 1}));
}

struct SyntaxRow {
  const char* name;
  const char* syntax;
  const char* line;
  const char* problem;  // empty: the line fits
};
const SyntaxRow syntaxRows[] = {
    {"NoWord", "", "x", ""},
    {"OneWordTooMany", "", "x a", "\"a\" is one word too many."},
    {"OptionalWordIsMissing", "NUMBER [TEXT]", "x 1", ""},
    {"RepeatedWord", "NUMBER...", "x 1 2 3", ""},
    {"RepeatedWordIsMissing", "NUMBER...", "x", "NUMBER is missing."},
    {"Choice", "api|tool", "x tool", ""},
    {"WordOutsideTheChoice", "api|tool", "x tol", "\"tol\" is not api|tool."},
    {"AnyWordInAChoice", "TEXT|off", "x on", ""},
    {"Number", "N", "x 65535", ""},
    {"NumberTooLarge", "N", "x 65536", "\"65536\" is not a whole number from 0 to 65535."},
    {"NegativeNumber", "N", "x -1", "\"-1\" is not a whole number from 0 to 65535."},
    {"NumberWithALetter", "N", "x 1a", "\"1a\" is not a whole number from 0 to 65535."},
    {"EmptyNumber", "N", "x \"\"", "\"\" is not a whole number from 0 to 65535."},
    {"UnknownOption", "[--parts N]", "x --part 2", "There is no option --part."},
    {"MissingValue", "[--parts N]", "x --parts", "--parts needs N."},
    {"WrongValue", "[--parts N]", "x --parts two", "--parts: \"two\" is not a whole number from 0 to 65535."},
    {"WrongList", "[--order N,N]", "x --order 2,b",
     "--order: \"2,b\" is not a list of whole numbers such as 2,1."},
    {"SecondForm", "api N, disk full", "x disk full", ""},
    {"ProblemOfTheNearestForm", "api N, api slow N, disk full", "x api slow", "N is missing."},
};
TEST_ROWS(Syntax, IsChecked, syntaxRows) {
  Arguments given;
  EXPECT_EQ(given.read(GetParam().syntax, wordsOf(GetParam().line)), GetParam().problem);
}
}  // namespace
