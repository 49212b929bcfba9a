#include "tests/Rows.h"
#include "veldctl/ShortMessage.h"

const Row<const char*, bool> numberRows[] = {
    {"Digits", "112", true},
    {"Plus", "+49", true},
    {"TwentyDigits", "+12345678901234567890", true},
    {"TwentyOneDigits", "+123456789012345678901", false},
    {"PlusAlone", "+", false},
    {"PlusInTheMiddle", "4+9", false},
    {"Empty", "", false},
    {"Command", "1;reboot", false},
};
TEST_ROWS(Number, IsDigits, numberRows) {
  EXPECT_EQ(ShortMessage::isNumber(GetParam().given), GetParam().expected);
}

struct EncodingRow {
  const char* name;
  std::string text;
  unsigned messages;
  const char* outside;
  const char* fault;
};
constexpr char tooLong[] =
    "the text is too long: 255 messages hold 39015 characters of the GSM alphabet, or 17085 other characters";
const EncodingRow encodingRows[] = {
    {"OneMessage", times(160, "x"), 1, "", ""},
    {"OneMoreThanOneMessage", times(161, "x"), 2, "", ""},
    {"TwoWholeParts", times(306, "x"), 2, "", ""},
    {"ExtensionCharactersCountTwice", times(80, "[") + "x", 2, "", ""},
    {"ExtensionCharactersAreNotDivided", times(153, "["), 3, "", ""},
    {"Ucs2", times(70, "ж"), 1, "ж", ""},
    {"TwoMessagesOfUcs2", times(71, "ж"), 2, "ж", ""},
    {"SurrogatePairCountsTwice", times(69, "ж") + "😀", 2, "ж😀", ""},
    {"NamesEachCharacterOnce", "ж€ёж", 1, "жё", ""},
    {"TheEscapeCode", "\x1b", 1, "\x1b", ""},
    {"LineFeedAndTab", "\n\t", 1, "\t", ""},
    {"TheLongest", times(39015, "Ω"), 255, "", ""},
    {"OneCharacterTooLong", times(39016, "x"), 256, "", tooLong},
    {"MoreBytesThanTheLimit", times(39016, "Ω"), 0, "", tooLong},
    {"Empty", "", 0, "", "the text is empty"},
    {"Nul", std::string("a\0", 2), 0, "", "the text holds a NUL character, at byte 2"},
    {"Delete", "\x7f", 0, "", "the text holds a control character, at byte 1"},
    {"HighControl", "\xc2\x85", 0, "", "the text holds a control character, at byte 1"},
    {"CutUtf8", "a\xc3", 0, "", "the text is not valid UTF-8, at byte 2"},
    {"Surrogate", "\xed\xa0\x80", 0, "", "the text is not valid UTF-8, at byte 1"},
};
TEST_ROWS(Encoding, CountsMessages, encodingRows) {
  const ShortMessage::Encoding encoding = ShortMessage::encodingOf(GetParam().text);
  EXPECT_EQ(encoding.fault, GetParam().fault);
  EXPECT_EQ(encoding.messages, GetParam().messages);
  EXPECT_EQ(encoding.fault.empty() ? encoding.outside : "", GetParam().outside);
}
