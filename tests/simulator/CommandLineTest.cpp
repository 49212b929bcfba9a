#include "simulator/console/CommandLine.h"
#include "tests/Rows.h"

using Simulator::CommandLine;

namespace {

using Words = std::vector<std::string>;

struct LineRow {
  const char* name;
  const char* line;
  Words words;
};
const LineRow lineRows[] = {
    {"Plain", "queue +49 text", {"+49", "text"}},
    {"Blanks", " \tqueue  +49\t text ", {"+49", "text"}},
    {"DoubleQuotes", "queue +49 \"two  words\"", {"+49", "two  words"}},
    {"SingleQuotes", "queue +49 'a \"b\" \\n'", {"+49", "a \"b\" \\n"}},
    {"Escapes", R"(queue "\"\\\n\x")", {"\"\\\n\\x"}},
    {"EmptyWord", "queue \"\"", {""}},
    {"QuoteInsideAWord", "queue a\"b c\"d", {"ab cd"}},
};
class Line : public testing::TestWithParam<LineRow> {};
TEST_P(Line, IsSplit) {
  CommandLine line;
  ASSERT_TRUE(line.read(GetParam().line));
  EXPECT_EQ(line.name(), "queue");
  EXPECT_EQ(line.words(), GetParam().words);
}
INSTANTIATE_ROWS(Line, lineRows);

TEST(CommandLine, RefusesAnOpenQuote) {
  CommandLine line;
  EXPECT_FALSE(line.read("queue \"text"));
  EXPECT_FALSE(line.read("queue 'text"));
}

TEST(CommandLine, TakesOptionsOutOfTheWords) {
  CommandLine line;
  ASSERT_TRUE(line.read("receive --parts 2 +49 --16-bit text --order 2,1"));
  EXPECT_EQ(line.takeNumber("--parts"), 2U);
  EXPECT_TRUE(line.takeFlag("--16-bit"));
  EXPECT_FALSE(line.takeFlag("--16-bit"));
  EXPECT_EQ(line.takeNumbers("--order"), (std::vector<unsigned>{2, 1}));
  EXPECT_EQ(line.words(), (Words{"+49", "text"}));
  EXPECT_EQ(line.leftOption(), "");
}

TEST(CommandLine, TakesAQuotedWordForNoOption) {
  CommandLine line;
  ASSERT_TRUE(line.read("receive +49 \"--16-bit\" --16-bit"));
  EXPECT_TRUE(line.takeFlag("--16-bit"));
  EXPECT_FALSE(line.takeFlag("--16-bit"));
  EXPECT_EQ(line.leftOption(), "");
  EXPECT_EQ(line.words(), (Words{"+49", "--16-bit"}));
}

struct ValueRow {
  const char* name;
  const char* line;
};
const ValueRow valueRows[] = {
    {"Missing", "receive --parts"},        {"Text", "receive --parts two"},
    {"Negative", "receive --parts -1"},    {"Empty", "receive --parts \"\""},
    {"TooLarge", "receive --parts 12345"}, {"ListWithText", "receive --parts 1,x"},
};
class Value : public testing::TestWithParam<ValueRow> {};
TEST_P(Value, ThatIsNoNumberLeavesItsOption) {
  CommandLine line;
  ASSERT_TRUE(line.read(GetParam().line));
  EXPECT_EQ(line.takeNumber("--parts"), std::nullopt);
  if (std::string(GetParam().name) != "TooLarge") line.takeNumbers("--parts");
  EXPECT_EQ(line.leftOption(), "--parts");
}
INSTANTIATE_ROWS(Value, valueRows);

}  // namespace
