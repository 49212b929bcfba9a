#include <algorithm>
#include <ctime>

#include "provider/Listing.h"
#include "tests/Testing.h"

namespace {
// Splits `text` into lines. Each line keeps its line feed; the last line may have no line feed.
std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> all;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) all.push_back(line + (stream.eof() ? "" : "\n"));
  return all;
}

// Returns the current time in a zone 9.5 hours ahead of UTC, as 14 digits.
std::string ahead() {
  const std::time_t shown = std::time(nullptr) + 34200;
  char text[80];
  return {text, std::strftime(text, sizeof(text), "%Y%m%d%H%M%S", std::gmtime(&shown))};
}
}  // namespace

// The records are compared without "guid" and "timestamp".
const Row<const char*, const char*> listingRows[] = {
    {"Empty", "", "[]"},
    {"NoMessage", "addr: 1\nuser-data: \"a\"\n", "[]"},
    {"Message", "index: 0\n  smsc-addr: +99\n  addr: +49\n  user-data: \"hi\"\n",
     "[{'source':'+49','message':'hi'}]"},
    {"ServiceCentreLast", "index\naddr: +49\nsmsc-addr: +99\n", "[{'source':'+49'}]"},
    {"MarkersAnywhere", "* index=1\n-> addr: 1 \t\r\n", "[{'source':'1'}]"},
    {"MarkersAreCaseSensitive", "index\nADDR: 1\naddr: 2\nUser-Data: a\n", "[{'source':'2'}]"},
    {"FirstOfTwo", "index\naddr: 1\naddr: 2\nuser-data: a\nuser-data: b\n", "[{'source':'1','message':'a'}]"},
    {"BothMarkersInOneLine", "index\naddr: 1 user-data: a\n", "[{'source':'1 user-data: a','message':'a'}]"},
    {"TextWithTheWordIndex", "index\naddr: 1\nuser-data: \"an index\"\naddr: 2\n",
     "[{'source':'1'},{'source':'2'}]"},
    {"LeadingQuoteOnly", "index\naddr: 1\nuser-data: \"a\n", "[{'source':'1','message':'a'}]"},
    {"TrailingQuoteOnly", "index\naddr: 1\nuser-data: a\"\n", "[{'source':'1','message':'a'}]"},
    {"TwoTrailingQuotes", "index\naddr: 1\nuser-data: \"a\"\"\n", "[{'source':'1','message':'a\\\"'}]"},
    {"OneQuote", "index\naddr: 1\nuser-data: \"\n", "[{'source':'1','message':''}]"},
    {"QuotedBlanks", "index\naddr: 1\nuser-data:  \" a \" \n", "[{'source':'1','message':' a '}]"},
    {"CharacterAfterTheMarkerIsSkipped", "index\naddr:_49\nuser-data:_hi\n",
     "[{'source':'49','message':'hi'}]"},
    {"SenderBesideServiceCentre", "index\naddr: 1 smsc-addr: 2\naddr: 3\n", "[{'source':'3'}]"},
    {"EachMarkerTwiceInItsLine", "index\naddr: 1 addr: 2\nuser-data: a user-data: b\n",
     "[{'source':'1 addr: 2','message':'a user-data: b'}]"},
    {"EmptyValues", "index\naddr:\nuser-data:\n", "[{'source':'','message':''}]"},
    {"ListingEndsAfterAMarker", "index\nuser-data: a\naddr:", "[{'source':'','message':'a'}]"},
    {"HeaderThenEscapes", "index\naddr: 1\nuser-data: \"\\x05\\x00\\x03\\x2a\\x01\\x01\\n\\\\x41\\x1be\"\n",
     "[{'source':'1','message':'\\nA€','part-id':42,'part-index':0,'part-count':1}]"},
};
TEST_ROWS(Message, IsParsed, listingRows) {
  const LogCapture quiet;
  Json::Value records(Json::arrayValue);
  for (Json::Value record : parseListing(lines(GetParam().given)).records) {
    EXPECT_TRUE(record.removeMember("guid", nullptr) && record.removeMember("timestamp", nullptr));
    records.append(record);
  }
  EXPECT_EQ(records, json(GetParam().expected));
}

TEST(Listing, LogsTheDecodedText) {
  LogCapture log;
  parseListing(lines("index\naddr: 1\nuser-data: a\\nb\n"));
  EXPECT_EQ(log.text(), "[INFO] New sms from 1, message: a#012b\n");
}

TEST(Listing, NumbersTheRecordsAndSkipsATakenGuid) {
  LogCapture log;
  const auto isTaken = [](const std::string& guid) { return guid.substr(14) == "01"; };
  const std::vector<Json::Value> records =
      parseListing(lines("index\nno sender\n" + times(120, "index\naddr: 1\n")), isTaken).records;
  EXPECT_EQ(log.text(),
            "[WARNING] SMS recipient is empty\n" + times(120, "[INFO] New sms from 1, message: \n"));
  ASSERT_EQ(records.size(), 120u);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::size_t ordinal = i == 0 ? 0 : i + 1;
    EXPECT_EQ(records[i]["guid"].asString().substr(14), (ordinal < 10 ? "0" : "") + std::to_string(ordinal));
  }
}

TEST(Listing, UsesTheLocalTime) {
  setenv("TZ", "AHEAD-9:30", 1);
  const std::string before = ahead();
  const LogCapture quiet;
  const Json::Value record = parseListing({"index\n", "addr: 1\n"}).records.at(0);
  unsetenv("TZ");
  std::string digits = record["timestamp"].asString();
  EXPECT_THAT(digits, testing::MatchesRegex("[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}"));
  digits.erase(std::remove_if(digits.begin(), digits.end(), [](char c) { return c < '0' || c > '9'; }),
               digits.end());
  EXPECT_EQ(record["guid"].asString(), digits + "00");
  EXPECT_GE(digits, before);
  EXPECT_LE(digits, ahead());
}
