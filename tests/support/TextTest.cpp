#include "support/Text.h"
#include "tests/Rows.h"

using namespace Orvel::Text;

struct SplitRow {
  const char* name;
  const char* text;
  int limit;
  std::vector<std::string> pieces;
};
const SplitRow splitRows[] = {
    {"Words", "a b c", 9, {"a", "b", "c"}},
    {"TwoBlanks", "a  b", 9, {"a", "", "b"}},
    {"BlanksAtTheEnds", " a ", 9, {"", "a", ""}},
    {"OtherSeparator", "a,b c", 9, {"a", "b", "c"}},
    {"NoSeparator", "abc", 9, {"abc"}},
    {"Empty", "", 9, {""}},
    {"ExactLimit", "a b", 2, {"a", "b"}},
    {"LimitKeepsTheRest", "a b  c", 2, {"a", "b  c"}},
    {"LimitZero", "a b", 0, {}},
};
TEST_ROWS(Split, ReturnsThePieces, splitRows) {
  EXPECT_EQ(split(GetParam().text, " ,", GetParam().limit), GetParam().pieces);
}

TEST(Trim, RemovesWhiteSpaceAtBothEndsOnly) {
  EXPECT_EQ(trim(" \t\n\r\v\fa\t b\f\v\r\n\t "), "a\t b");
  EXPECT_EQ(trim(" \n "), "");
  EXPECT_EQ(trim("\xC2\xA0"), "\xC2\xA0");
}

TEST(ToLowerCase, ChangesAsciiLettersOnly) { EXPECT_EQ(toLowerCase("@AZ[ÄÉ"), "@az[ÄÉ"); }
