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
  const char* decoded;  // the text that the daemon decodes; null: `text`
};
const PrintRow printRows[] = {
    {"Letters", "Hello 42", "Hello 42", nullptr},
    {"Empty", "", "", nullptr},
    {"Quote", "say \"hi\"", "say \\\"hi\\\"", nullptr},
    {"LineFeeds", "a\nb\r", "a\\nb\\r", nullptr},
    {"CodeZero", "@", "\\x00", nullptr},
    {"CodeOfAnotherAsciiCharacter", "ä", "\\x7b", nullptr},
    {"CodeOfAControlCharacter", "Ç", "\\x09", nullptr},
    {"Utf8CharacterOfThreeBytes", "€", "\\x1be", nullptr},
    {"Extensions", "{}\\[~]", "\\x1b(\\x1b)\\x1b/\\x1b<\\x1b=\\x1b>", nullptr},
    {"BackslashBeforeHex", "\\x41", "\\x1b/x41", nullptr},
    {"Caret", "^", "\\x1b\\x14", "x14"},
    {"FormFeed", "\f", "\\x1b\\x0a", "x0a"},
    {"Bar", "|", "\\x1b@", "?"},
};
TEST_ROWS(PrintedText, IsDecodedByTheDaemon, printRows) {
  GsmEncoder encoder;
  ASSERT_EQ(encoder.encode(GetParam().text, {}), "");
  const bool changed = GetParam().decoded != nullptr;
  EXPECT_EQ(encoder.parts, std::vector<std::string>{GetParam().printed});
  EXPECT_EQ(decoded(encoder.parts[0]), changed ? GetParam().decoded : GetParam().text);
  EXPECT_EQ(encoder.notes.empty(), !changed);
}

TEST(GsmEncoder, EncodesTheWholeAlphabet) {
  const std::string text =
      "@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
      "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
  GsmEncoder encoder;
  ASSERT_EQ(encoder.encode(text, {}), "");
  ASSERT_EQ(encoder.parts.size(), 1U);  // the text has 127 septets
  EXPECT_EQ(decoded(encoder.parts[0]), text);
}

struct SplitRow {
  const char* name;
  std::string text;
  GsmEncoder::Options options;
  const char* lastHeader;
  std::vector<std::size_t> lengths;  // the bytes in each decoded part
};
const SplitRow splitRows[] = {
    {"OneMessage", times(160, "a"), {}, "", {160}},
    {"OneSeptetTooMany", times(161, "a"), {}, R"(\x05\x00\x03\x01\x02\x02\x00)", {153, 8}},
    {"CharactersOfTwoSeptets", times(81, "{"), {}, R"(\x05)", {76, 5}},
    {"WideReference", times(161, "a"), {true, 0, 0x1234}, R"(\x06\x08\x04\x12\x34\x02\x02)", {152, 9}},
    {"ThreeParts", "abcde", {false, 3, 200}, R"(\x05\x00\x03\xc8\x03\x03\x00)", {2, 2, 1}},
    {"OneLetterInEachPart", "abcd", {false, 4, 1}, R"(\x05)", {1, 1, 1, 1}},
    {"MorePartsThanRequested", times(500, "a"), {false, 2, 1}, R"(\x05)", {153, 153, 153, 41}},
    {"PartBeginsWithTheCodeOfTheFillBit", "a@", {false, 2, 1}, R"(\x05)", {1, 1}},
};
TEST_ROWS(DividedText, IsDecodedByTheDaemon, splitRows) {
  GsmEncoder encoder;
  ASSERT_EQ(encoder.encode(GetParam().text, GetParam().options), "");
  EXPECT_EQ(encoder.parts.back().find(GetParam().lastHeader), 0U) << encoder.parts.back();
  std::string whole;
  std::vector<std::size_t> lengths;
  for (std::size_t i = 0; i < encoder.parts.size(); ++i) {
    Json::Value record;
    const std::string text = decodeUserData(encoder.parts[i], record);
    EXPECT_EQ(record.get("part-index", 0).asUInt(), i);
    lengths.push_back(text.size());
    whole += text;
  }
  EXPECT_EQ(lengths, GetParam().lengths);
  EXPECT_EQ(whole, GetParam().text);
}

const Row<std::string, const char*> refusalRows[] = {
    {"CharacterOutsideTheAlphabet", "aж", "no \"ж\""},
    {"Tab", "\t", "no \"\t\""},
    {"InvalidUtf8", "ab\xff", "byte 3"},
    {"TruncatedUtf8", "\xc3", "byte 1"},
    {"OverlongUtf8", "\xc0\xaf", "byte 1"},
    {"MorePartsThanCharacters", "ab", "3 parts"},
    {"TooLong", times(153 * 255 + 1, "a"), "256 parts"},
};
TEST_ROWS(RefusedText, IsExplained, refusalRows) {
  GsmEncoder encoder;
  const std::string problem = encoder.encode(GetParam().given, {false, 3, 1});
  EXPECT_NE(problem.find(GetParam().expected), std::string::npos) << problem;
}
}  // namespace
