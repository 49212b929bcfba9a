#include "provider/GsmAlphabet.h"
#include "provider/UserData.h"
#include "tests/Testing.h"

struct ByteRow {
  const char* name;
  const char* text;
  int byte;
  std::size_t cursor;  ///< where it stands afterwards
};
const ByteRow byteRows[] = {
    {"Plain", "a", 'a', 1},
    {"PlainHighByte", "\xE9", 0xE9, 1},
    {"HexUpper", "\\xFF", 255, 4},
    {"HexLower", "\\xa0", 160, 4},
    {"HexNoDigit", "\\xg0", -1, 4},
    {"HexNoUpperDigit", "\\xG0", -1, 4},
    {"HexOneDigit", "\\x1", -1, 4},
    {"HexNoDigits", "\\x", -1, 4},
    {"Quote", "\\\"", '"', 2},
    {"Apostrophe", "\\'", '\'', 2},
    {"QuestionMark", "\\?", '?', 2},
    {"Backslash", "\\\\", '\\', 2},
    {"Bell", "\\a", 7, 2},
    {"Tab", "\\t", 9, 2},
    {"VerticalTab", "\\v", 11, 2},
    {"UnknownInsideTheTable", "\\e", -1, 2},
    {"BelowTheTable", "\\!", -1, 2},
    {"AboveTheTable", "\\w", -1, 2},
    {"HighByteBehindBackslash", "\\\xE9", -1, 2},
    {"LoneBackslash", "\\", -1, 2},
    {"End", "", 0, 1},
};
TEST_ROWS(EscapedByte, IsRead, byteRows) {
  std::size_t cursor = 0;
  EXPECT_EQ(readEscapedByte(cursor, GetParam().text), GetParam().byte);
  EXPECT_EQ(cursor, GetParam().cursor);
}

TEST(EscapedByte, IsZeroPastTheEnd) {
  std::size_t cursor = 1000;
  EXPECT_EQ(readEscapedByte(cursor, "abc"), 0);
}

struct HeaderRow {
  const char* name;
  const char* text;
  const char* record;
  const char* rest;
};
const HeaderRow headerRows[] = {
    {"Empty", "", "null", ""},
    {"UndecodableReference16Low", R"(\x06\x08\x04\x12\xzz\x03\x02)",
     "{'part-id':4863,'part-index':1,'part-count':3}", ""},
    {"UndecodableReference16", R"(\x06\x08\x04\xzz\x34\x03\x02)",
     "{'part-id':65332,'part-index':1,'part-count':3}", ""},
    {"FillOctetOnce", R"(\x05\x00\x03\x2a\x02\x01\x00\x00Hello)",
     "{'part-id':42,'part-index':0,'part-count':2}", R"(\x00Hello)"},
    {"HeaderLengthOne", R"(\x01\x00\x03\x2a\x02\x01Hello)", "{'part-id':42,'part-index':0,'part-count':2}",
     "Hello"},
    {"PrintedOctets", R"(\x05\x00\x03*\x02\x01Hello)", "{'part-id':42,'part-index':0,'part-count':2}",
     "Hello"},
    {"NamedEscapes", R"(\a\x08\x04\n\f\r\b!)", "{'part-id':2572,'part-index':7,'part-count':13}", "!"},
    {"AnyHeaderLength", R"(\x63\x00\x03\x2a\x02\x01Hello)", "{'part-id':42,'part-index':0,'part-count':2}",
     "Hello"},
    {"NoHeaderLength", R"(\x00\x00\x03\x2a\x02\x01Hello)", "null", R"(\x00\x00\x03\x2a\x02\x01Hello)"},
    {"UndecodableLength", R"(\xzz\x00\x03\x2a\x02\x01Hello)", "null", R"(\xzz\x00\x03\x2a\x02\x01Hello)"},
    {"OtherElement", R"(\x05\x05\x03\x2a\x02\x01Hello)", "null", R"(\x05\x05\x03\x2a\x02\x01Hello)"},
    {"WrongLength8", R"(\x05\x00\x04\x2a\x02\x01Hello)", "null", R"(\x05\x00\x04\x2a\x02\x01Hello)"},
    {"WrongLength16", R"(\x06\x08\x03\x12\x34\x03\x02)", "null", R"(\x06\x08\x03\x12\x34\x03\x02)"},
    {"UndecodableReference8", R"(\x05\x00\x03\xzz\x02\x01)", "null", R"(\x05\x00\x03\xzz\x02\x01)"},
    {"UndecodableCount", R"(\x05\x00\x03\x2a\xzz\x01)", "null", R"(\x05\x00\x03\x2a\xzz\x01)"},
    {"UndecodableNumber", R"(\x05\x00\x03\x2a\x02\xzz)", "null", R"(\x05\x00\x03\x2a\x02\xzz)"},
    {"NumberZero", R"(\x05\x00\x03\x2a\x02\x00Hello)", "null", "Hello"},
    {"NumberAboveCount", R"(\x05\x00\x03\x2a\x02\x03Hello)", "null", "Hello"},
    {"CutBehindReference", R"(\x05\x00\x03\x2a)", "null", ""},
    {"CutInsideNumber", R"(\x05\x00\x03\x2a\x02\x0)", "null", R"(\x05\x00\x03\x2a\x02\x0)"},
};
TEST_ROWS(Header, IsRemoved, headerRows) {
  Json::Value record;
  std::string text = GetParam().text;
  parseUserDataHeader(record, text);
  EXPECT_EQ(record, json(GetParam().record));
  EXPECT_EQ(text, GetParam().rest);
}

const Row<const char*, const char*> unescapeRows[] = {
    {"All", R"(\"\\\n\r\t)", "\"\\\n\r\t"},
    {"BackslashIsNotLookedAtAgain", R"(a\\nb)", R"(a\nb)"},
    {"HexStays", R"(\x41)", R"(\x41)"},
    {"OtherEscapesStay", R"(\a\?\')", R"(\a\?\')"},
    {"OtherEscapeHidesABackslash", R"(\\x\q\\n)", R"(\x\q\n)"},
    {"LoneBackslash", "a\\", "a\\"},
};
TEST_ROWS(Unescape, ResolvesItsFiveEscapes, unescapeRows) {
  std::string text = GetParam().given;
  unescapeText(text);
  EXPECT_EQ(text, GetParam().expected);
}

TEST(GsmAlphabet, IsComplete) {
  std::string codes, extension;
  for (const std::string_view text : gsmDefaultAlphabet) codes += text;
  for (std::size_t code = 0; code < gsmExtensionAlphabet.size(); ++code)
    if (gsmExtensionAlphabet[code] != "?")
      extension += std::to_string(code) + std::string(gsmExtensionAlphabet[code]) + " ";
  EXPECT_EQ(codes,
            "@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x1BÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
            "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà");
  EXPECT_EQ(extension, "15\f 19^ 40{ 41} 47\\ 60[ 61~ 62] 64| 101€ ");
}

const Row<const char*, const char*> decodeRows[] = {
    {"HighBytesPass", "é\xFF", "é\xFF"},
    {"UpperSecondDigit", R"(\x0A)", "\n"},
    {"FirstOfTheExtension", R"(\x80)", "?"},
    {"LastDecodable", R"(\xaf)", "\\"},
    {"UpperFirstDigitEnds", R"(A\x41\xB1\x41)", R"(AA\xB1\x41)"},
    {"UpperAEnds", R"(\x41\xA8)", R"(A\xA8)"},
    {"LowerBEnds", R"(\x41\xb1\x41)", R"(A\xb1\x41)"},
    {"NoDigitEnds", R"(\x41\x\x41)", R"(A\x\x41)"},
    {"NoSecondDigit", R"(\x4g)", "è"},
    {"HexPrefix", R"(\x0x41)", "@41"},
    {"CutBehindX", R"(a\x)", R"(a\x)"},
    {"CutBehindOneDigit", R"(a\x4)", "aè"},
    {"DoubledBackslash", R"(\\x41)", "\\A"},
    {"EscapeWithoutExtension", R"(\x1bA)", "?"},
    {"EscapeFirstByteOfTwo", "\\x1b\xC3\xA4", "?\xA4"},
    {"EscapeUnknownCharacter", R"(\x1b[b)", "b"},
    {"EscapeAtTheEnd", R"(a\x1b)", "a"},
    {"EscapeBeforeEscape", R"(\x1B\x14)", "x14"},
    {"ByteBehindNothingIsPassedOver", R"(\x1b[\x41\x41)", R"(\x41A)"},
    {"BackslashFromATableBeginsNothing", R"(\xafx41)", R"(\x41)"},
};
TEST_ROWS(Decode, ReplacesHexEscapes, decodeRows) {
  const std::string text = GetParam().given;
  std::vector<char> bytes(text.begin(), text.end());
  decodeGsmEscapes(bytes);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), GetParam().expected);
}
