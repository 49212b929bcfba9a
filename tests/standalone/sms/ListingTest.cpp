#include <random>
#include <sstream>

#include "provider/Listing.h"
#include "provider/MultipartJoiner.h"
#include "standalone/sms/Alphabet.h"
#include "standalone/sms/Listing.h"
#include "storage/MessageRecord.h"
#include "tests/Rows.h"

using Standalone::Message;

namespace {
namespace Key = MessageRecord::Key;

constexpr std::size_t pieceSize = 1023;  // the daemon reads a line in pieces of this size

// Parses a listing as the daemon does.
std::vector<Json::Value> readByTheDaemon(const std::string& listing) {
  std::vector<std::string> pieces;
  std::istringstream in(listing);
  for (std::string line; std::getline(in, line);)
    for (std::string rest = line + "\n"; !rest.empty(); rest.erase(0, pieceSize))
      pieces.emplace_back(rest.substr(0, pieceSize).c_str());
  return joinMultipartMessages(parseListing(pieces).records);
}

std::string listed(const std::vector<Message>& messages) {
  Standalone::Listing listing;
  std::string all;
  for (const Message& message : messages) all += listing.print(message);
  return all;
}

// Lists the text in one message, and returns the text that the daemon then reads.
std::string arriving(const std::string& text) {
  const std::vector<Json::Value> records = readByTheDaemon(listed({{"1", false, "+1", "+2", text}}));
  return records.size() == 1 && !records[0].isMember(Key::PartId) ? records[0][Key::Message].asString()
                                                                  : "another number of messages";
}

struct TextRow {
  const char* name;
  std::string text;
};
const TextRow textRows[] = {
    {"Empty", ""},
    {"Marker", "index indexindex"},
    {"OtherMarkers", "smsc-addr: 1 addr: 2 user-data: \"3\""},
    {"Extensions", "^{}[~]|€\\\f"},
    {"Header8", "\5\b\4abcd"},
    {"HeaderBehindQuote", "\"\b\4abcd"},
    {"HeaderBehindBackslash", "\\\b\4abcd"},
    {"Controls", "\a\b\t\v\f\x1b\x7f"},
    {"FullPart", std::string(900, 'a')},
    {"OneMoreThanAPart", std::string(901, 'a')},
    {"LongerWhenEscaped", std::string(300, '\\')},
    {"ManyParts", std::string(39000, 'l')},
};
TEST_ROWS(ListedText, Arrives, textRows) { EXPECT_EQ(arriving(GetParam().text), GetParam().text); }

TEST(ListedTexts, ArriveWithAnyContent) {
  const std::vector<std::string> alphabet = {
      "\\",  "x",  "4", "1",     "b", "a",  "n",  "\"", "\n", "\r", "\b",         "\x04", "\x01", "index",
      "ind", "ex", " ", "addr:", "é", "中", "🙂", "\t", "/",  "[",  "user-data:", "\x1b", "\x06", "\x08"};
  std::mt19937 random(1);
  for (unsigned tries = 0; tries < 4000; ++tries) {
    std::string text;
    for (auto length = random() % (tries % 50 == 0 ? 3000 : 12); length > 0; --length)
      text += alphabet[random() % alphabet.size()];
    ASSERT_EQ(arriving(text), text) << Standalone::toHex(text);
  }
}

TEST(Listing, DoesNotMixPartsOfEqualMessages) {
  const std::string text(1500, 'a');
  const Message message{"1", false, "", "+2", text};
  const std::vector<Json::Value> records = readByTheDaemon(listed({message, message}));
  ASSERT_EQ(records.size(), 2U);
  for (const Json::Value& record : records) EXPECT_EQ(record[Key::Message].asString(), text);
}

TEST(Listing, ReplacesANul) { EXPECT_EQ(arriving(std::string("a\0b", 3)), "a\uFFFDb"); }

const Row<std::string, const char*> senderRows[] = {
    {"Number", "+4917011111", "+4917011111"},
    {"Name", "My Bank", "My Bank"},
    {"None", " ", "unknown"},
    {"MessageMarker", "findex", "fIndex"},
    {"SenderMarker", "addr:x", "addr:x"},
    {"CentreMarker", "smsc-addr:x", "Smsc-addr:x"},
    {"TextMarker", "user-data:x", "User-data:x"},
    {"LineFeed", "a\nb", "a b"},
};
TEST_ROWS(ListedSender, Arrives, senderRows) {
  const std::vector<Json::Value> records = readByTheDaemon(listed({{"1", false, "", GetParam().given, "t"}}));
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0][Key::Source].asString(), GetParam().expected);
  EXPECT_EQ(records[0][Key::Message].asString(), "t");
}
}  // namespace
