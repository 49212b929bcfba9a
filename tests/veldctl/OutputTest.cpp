#include "tests/Rows.h"
#include "veldctl/Output.h"

const Row<std::string, const char*> printableRows[] = {
    {"Plain", "Grüße", "Grüße"},
    {"Escape", "\x1b[2J", "#033[2J"},
    {"LineFeed", "a\nb", "a#012b"},
    {"NotUtf8", "\xff", "#377"},
    {"RightToLeftOverride", "\u202e", "#342#200#256"},
    {"Isolate", "\u2066", "#342#201#246"},
    {"ArabicLetterMark", "\u061c", "#330#234"},
    {"LineSeparator", "\u2028", "#342#200#250"},
    {"NeighboursOfTheSeparators", "\u2027\u202f", "\u2027\u202f"},
    {"Arabic", "\u0633", "\u0633"},
};
TEST_ROWS(Printable, EscapesControlCharacters, printableRows) {
  EXPECT_EQ(Output::printable(GetParam().given), GetParam().expected);
}

struct CutRow {
  const char* name;
  const char* text;
  std::size_t columns;
  const char* cut;
};
const CutRow cutRows[] = {
    {"Fits", "12345", 5, "12345"},
    {"OneColumnTooMany", "123456", 5, "1234…"},
    {"TwoBytes", "äöüäöü", 5, "äöüä…"},
    {"Wide", "日本語", 5, "日本…"},
    {"WideFits", "日本語", 6, "日本語"},
    {"HalfAWideCharacter", "日本語", 4, "日…"},
    {"Combining", "e\u0301e\u0301", 2, "e\u0301e\u0301"},
    {"NoRoom", "12", 0, ""},
};
TEST_ROWS(Cut, CountsColumns, cutRows) {
  EXPECT_EQ(Output::cut(GetParam().text, GetParam().columns), GetParam().cut);
}
