#include "provider/GsmAlphabet.h"
#include "provider/UserData.h"
#include "tests/Testing.h"

struct ByteRow {
  const char* name;
  const char* text;
  int byte;
  std::size_t cursor;  ///< the cursor's new position
};
const ByteRow byteRows[] = {
    {"Plain", "a", 'a', 1},
    {"PlainHighByte", "\xE9", 0xE9, 1},
    {"HexUpper", "\\xFF", 255, 4},
    {"HexLower", "\\xa0", 160, 4},
    {"HexWithLowerG", "\\xg0", -1, 4},
    {"HexWithUpperG", "\\xG0", -1, 4},
    {"HexOneDigit", "\\x1", -1, 4},
    {"HexWithoutDigits", "\\x", -1, 4},
    {"Quote", "\\\"", '"', 2},
    {"Apostrophe", "\\'", '\'', 2},
    {"QuestionMark", "\\?", '?', 2},
    {"Backslash", "\\\\", '\\', 2},
    {"Bell", "\\a", 7, 2},
    {"Tab", "\\t", 9, 2},
    {"VerticalTab", "\\v", 11, 2},
    {"UnknownEscape", "\\e", -1, 2},
    {"HighByteAfterBackslash", "\\\xE9", -1, 2},
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

namespace {
// Returns "REFERENCE INDEX/COUNT REST" for a record with a part's keys, and "- REST" for another record.
std::string described(const Json::Value& record, const std::string& rest) {
  if (record.isNull()) return "- " + rest;
  return record["part-id"].asString() + " " + record["part-index"].asString() + "/" +
         record["part-count"].asString() + " " + rest;
}
}  // namespace

const Row<const char*, const char*> headerRows[] = {
    {"Empty", "", "- "},
    {"UndecodableReference16Low", R"(\x06\x08\x04\x12\xzz\x03\x02)", "4863 1/3 "},
    {"UndecodableReference16", R"(\x06\x08\x04\xzz\x34\x03\x02)", "65332 1/3 "},
    {"OneFillOctetIsRemoved", R"(\x05\x00\x03\x2a\x02\x01\x00\x00Hello)", R"(42 0/2 \x00Hello)"},
    {"HeaderLength1", R"(\x01\x00\x03\x2a\x02\x01Hello)", "42 0/2 Hello"},
    {"PrintableOctet", R"(\x05\x00\x03*\x02\x01Hello)", "42 0/2 Hello"},
    {"NamedEscapes", R"(\a\x08\x04\n\f\r\b!)", "2572 7/13 !"},
    {"HeaderLength99", R"(\x63\x00\x03\x2a\x02\x01Hello)", "42 0/2 Hello"},
    {"HeaderLength0", R"(\x00\x00\x03\x2a\x02\x01Hello)", R"(- \x00\x00\x03\x2a\x02\x01Hello)"},
    {"UndecodableLength", R"(\xzz\x00\x03\x2a\x02\x01Hello)", R"(- \xzz\x00\x03\x2a\x02\x01Hello)"},
    {"OtherElement", R"(\x05\x05\x03\x2a\x02\x01Hello)", R"(- \x05\x05\x03\x2a\x02\x01Hello)"},
    {"WrongLength8", R"(\x05\x00\x04\x2a\x02\x01Hello)", R"(- \x05\x00\x04\x2a\x02\x01Hello)"},
    {"WrongLength16", R"(\x06\x08\x03\x12\x34\x03\x02)", R"(- \x06\x08\x03\x12\x34\x03\x02)"},
    {"UndecodableReference8", R"(\x05\x00\x03\xzz\x02\x01)", R"(- \x05\x00\x03\xzz\x02\x01)"},
    {"UndecodableCount", R"(\x05\x00\x03\x2a\xzz\x01)", R"(- \x05\x00\x03\x2a\xzz\x01)"},
    {"UndecodableNumber", R"(\x05\x00\x03\x2a\x02\xzz)", R"(- \x05\x00\x03\x2a\x02\xzz)"},
    {"NumberZero", R"(\x05\x00\x03\x2a\x02\x00Hello)", "- Hello"},
    {"NumberAboveCount", R"(\x05\x00\x03\x2a\x02\x03Hello)", "- Hello"},
    {"TruncatedAfterTheReference", R"(\x05\x00\x03\x2a)", "- "},
    {"TruncatedInTheNumber", R"(\x05\x00\x03\x2a\x02\x0)", R"(- \x05\x00\x03\x2a\x02\x0)"},
};
TEST_ROWS(Header, IsReadAndRemoved, headerRows) {
  Json::Value record;
  std::string text = GetParam().given;
  parseUserDataHeader(record, text);
  EXPECT_EQ(described(record, text), GetParam().expected);
}

const Row<const char*, const char*> unescapeRows[] = {
    {"All", R"(\"\\\n\r\t)", "\"\\\n\r\t"},
    {"ReplacedBackslashBeginsNoEscape", R"(a\\nb)", R"(a\nb)"},
    {"HexStays", R"(\x41)", R"(\x41)"},
    {"OtherEscapesStay", R"(\a\?\')", R"(\a\?\')"},
    {"BackslashAfterAnotherEscape", R"(\\x\q\\n)", R"(\x\q\n)"},
    {"LoneBackslash", "a\\", "a\\"},
};
TEST_ROWS(Unescape, ReplacesFiveEscapes, unescapeRows) {
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
    {"HighBytesStay", "é\xFF", "é\xFF"},
    {"UpperCaseSecondDigit", R"(\x0A)", "\n"},
    {"FirstCodeOfTheExtension", R"(\x80)", "?"},
    {"LastDecodableCode", R"(\xaf)", "\\"},
    {"UpperCaseAEndsTheDecoding", R"(\x41\xA8)", R"(A\xA8)"},
    {"LowerCaseBEndsTheDecoding", R"(\x41\xb1\x41)", R"(A\xb1\x41)"},
    {"MissingDigitEndsTheDecoding", R"(\x41\x\x41)", R"(A\x\x41)"},
    {"InvalidSecondDigit", R"(\x4g)", "è"},
    {"HexPrefix", R"(\x0x41)", "@41"},
    {"TruncatedAfterX", R"(a\x)", R"(a\x)"},
    {"TruncatedAfterOneDigit", R"(a\x4)", "aè"},
    {"DoubledBackslash", R"(\\x41)", "\\A"},
    {"EscapeWithoutExtension", R"(\x1bA)", "?"},
    {"EscapeBeforeACharacterOfTwoBytes", "\\x1b\xC3\xA4", "?\xA4"},
    {"EscapeBeforeAnUnknownCharacter", R"(\x1b[b)", "b"},
    {"EscapeAtTheEnd", R"(a\x1b)", "a"},
    {"EscapeBeforeEscape", R"(\x1B\x14)", "x14"},
    {"ByteAfterAnEmptyReplacementIsNotDecoded", R"(\x1b[\x41\x41)", R"(\x41A)"},
    {"DecodedBackslashBeginsNoEscape", R"(\xafx41)", R"(\x41)"},
};
TEST_ROWS(Decode, ReplacesHexEscapes, decodeRows) {
  const std::string text = GetParam().given;
  std::vector<char> bytes(text.begin(), text.end());
  decodeGsmEscapes(bytes);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), GetParam().expected);
}
