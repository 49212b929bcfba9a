#include <algorithm>

#include "provider/UserData.h"
#include "simulator/modem/GsmEncoder.h"
#include "tests/Rows.h"

using Simulator::GsmEncoder;

namespace {

// Decodes a part as the daemon does.
std::string decoded(const std::string& part) {
  Json::Value record;
  return decodeUserData(part, record);
}

struct PrintRow {
  const char* name;
  const char* text;
  const char* printed;
  const char* arrives;  // at the daemon; null: unchanged
};
const PrintRow printRows[] = {
    {"Letters", "Hello 42", "Hello 42", nullptr},
    {"Empty", "", "", nullptr},
    {"Quote", "say \"hi\"", "say \\\"hi\\\"", nullptr},
    {"LineFeeds", "a\nb\r", "a\\nb\\r", nullptr},
    {"FirstCode", "@", "\\x00", nullptr},
    {"CodeIsAnotherAsciiCharacter", "ä", "\\x7b", nullptr},
    {"TabIsCapitalC", "Ç", "\\x09", nullptr},
    {"ThreeBytes", "€", "\\x1be", nullptr},
    {"Extensions", "{}\\[~]", "\\x1b(\\x1b)\\x1b/\\x1b<\\x1b=\\x1b>", nullptr},
    {"BackslashBeforeHex", "\\x41", "\\x1b/x41", nullptr},
    {"Caret", "^", "\\x1b\\x14", "x14"},
    {"FormFeed", "\f", "\\x1b\\x0a", "x0a"},
    {"Bar", "|", "\\x1b@", "?"},
};
TEST_ROWS(PrintedText, IsReadByTheDaemon, printRows) {
  GsmEncoder encoder;
  ASSERT_EQ(encoder.encode(GetParam().text, {}), "");
  const bool changed = GetParam().arrives != nullptr;
  EXPECT_EQ(encoder.parts, std::vector<std::string>{GetParam().printed});
  EXPECT_EQ(decoded(encoder.parts[0]), changed ? GetParam().arrives : GetParam().text);
  EXPECT_EQ(encoder.notes.empty(), !changed);
}

TEST(GsmEncoder, CarriesTheWholeAlphabet) {
  const std::string text =
      "@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
      "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
  GsmEncoder encoder;
  ASSERT_EQ(encoder.encode(text, {}), "");
  ASSERT_EQ(encoder.parts.size(), 1U);  // 127 septets
  EXPECT_EQ(decoded(encoder.parts[0]), text);
}

struct SplitRow {
  const char* name;
  std::string text;
  GsmEncoder::Options options;
  std::vector<std::string> headers;  // of the parts
  std::vector<std::size_t> lengths;  // of the decoded parts, in bytes
};
const SplitRow splitRows[] = {
    {"Fits", times(160, "a"), {}, {""}, {160}},
    {"OneTooMany",
     times(161, "a"),
     {},
     {"\\x05\\x00\\x03\\x01\\x02\\x01\\x00", "\\x05\\x00\\x03\\x01\\x02\\x02\\x00"},
     {153, 8}},
    {"ExtensionsCountTwice", times(81, "{"), {}, {2, "\\x05"}, {76, 5}},
    {"WideReference",
     times(161, "a"),
     {true, 0, 0x1234},
     {"\\x06\\x08\\x04\\x12\\x34\\x02\\x01", "\\x06\\x08\\x04\\x12\\x34\\x02\\x02"},
     {152, 9}},
    {"AskedFor",
     "abcde",
     {false, 3, 200},
     {"\\x05\\x00\\x03\\xc8\\x03\\x01\\x00", "\\x05\\x00\\x03\\xc8\\x03\\x02\\x00",
      "\\x05\\x00\\x03\\xc8\\x03\\x03\\x00"},
     {2, 2, 1}},
    {"OneLetterEach", "abcd", {false, 4, 1}, {"\\x05", "\\x05", "\\x05", "\\x05"}, {1, 1, 1, 1}},
    {"MoreThanAskedFor", times(500, "a"), {false, 2, 1}, {4, "\\x05"}, {153, 153, 153, 41}},
    {"PartBeginsWithTheFillCode", "a@", {false, 2, 1}, {"\\x05", "\\x05"}, {1, 1}},
};
TEST_ROWS(SplitText, IsReadByTheDaemon, splitRows) {
  GsmEncoder encoder;
  ASSERT_EQ(encoder.encode(GetParam().text, GetParam().options), "");
  ASSERT_EQ(encoder.parts.size(), GetParam().headers.size());
  std::string whole;
  std::vector<std::size_t> lengths;
  for (std::size_t i = 0; i < encoder.parts.size(); ++i) {
    EXPECT_EQ(encoder.parts[i].substr(0, GetParam().headers[i].size()), GetParam().headers[i]);
    lengths.push_back(decoded(encoder.parts[i]).size());
    whole += decoded(encoder.parts[i]);
  }
  EXPECT_EQ(lengths, GetParam().lengths);
  EXPECT_EQ(whole, GetParam().text);
}

struct RefusalRow {
  const char* name;
  std::string text;
  unsigned parts;
  const char* problem;
};
const RefusalRow refusalRows[] = {
    {"NoGsmCharacter", "aж", 0, "no \"ж\""},
    {"Tab", "\t", 0, "no \"\t\""},
    {"NotUtf8", "ab\xff", 0, "byte 3"},
    {"CutUtf8", "\xc3", 0, "byte 1"},
    {"OverlongUtf8", "\xc0\xaf", 0, "byte 1"},
    {"MorePartsThanCharacters", "ab", 3, "3 parts"},
    {"TooLong", times(153 * 255 + 1, "a"), 0, "256 parts"},
};
TEST_ROWS(RefusedText, SaysWhy, refusalRows) {
  GsmEncoder encoder;
  const std::string problem = encoder.encode(GetParam().text, {false, GetParam().parts, 1});
  EXPECT_NE(problem.find(GetParam().problem), std::string::npos) << problem;
}

}  // namespace
