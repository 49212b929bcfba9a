// The input is the output of `sms list read`. Tests the records that the provider makes of this output.

#include "provider/Listing.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "daemon/PartMerger.h"
#include "fuzz/shared/Property.h"
#include "fuzz/shared/ReferenceDecoder.h"
#include "provider/MultipartJoiner.h"
#include "provider/SmsUtilsProvider.h"
#include "provider/UserData.h"

namespace {
using Records = std::vector<Json::Value>;

std::string printed;  // output of the tool
int deletions = 0;

struct Message {
  std::optional<std::string> sender, text;
};

// Splits the output as the provider does: into lines of up to 1023 bytes, each cut at its first NUL.
std::vector<std::string> pieces() {
  std::vector<std::string> found;
  std::size_t begin = 0;
  while (begin < printed.size()) {
    const std::size_t lineFeed = std::min(printed.find('\n', begin), printed.size() - 1);
    const std::size_t end = std::min<std::size_t>(lineFeed + 1, begin + 1023);
    found.emplace_back(printed.substr(begin, end - begin).c_str());
    begin = end;
  }
  return found;
}

std::string trimmed(std::string text) {
  while (!text.empty() && std::strchr(" \t\n\r\v\f", text.front()) != nullptr) text.erase(0, 1);
  while (!text.empty() && std::strchr(" \t\n\r\v\f", text.back()) != nullptr) text.pop_back();
  return text;
}

std::string decoded(std::string text) {
  Json::Value ignored;
  if (text.substr(0, 1) == "\"") text.erase(0, 1);
  if (!text.empty() && text.back() == '"') text.pop_back();
  ReferenceDecoder::parseHeader(ignored, text);
  ReferenceDecoder::unescape(text);
  ReferenceDecoder::decode(text);
  return text;
}

std::vector<Message> messages(const std::vector<std::string>& lines) {
  std::vector<Message> found;
  for (const std::string& line : lines) {
    const auto has = [&](const char* marker) { return line.find(marker) != std::string::npos; };
    const auto valueAt = [&](std::size_t at) { return trimmed(at < line.size() ? line.substr(at) : ""); };
    if (has("index")) {
      found.emplace_back();
    } else if (!found.empty()) {
      Message& message = found.back();
      if (has("addr:") && !has("smsc-addr:") && !message.sender)
        message.sender = valueAt(line.find("addr:") + 6);
      if (has("user-data:") && !message.text) message.text = decoded(valueAt(line.find("user-data:") + 11));
    }
  }
  return found;
}

void checkDecoding(const std::string& line) {
  Json::Value record, expectedRecord;
  std::string text = line, expected = line;
  parseUserDataHeader(record, text);
  ReferenceDecoder::parseHeader(expectedRecord, expected);
  property(record == expectedRecord && text == expected, "both decoders read the same header");

  unescapeText(text);
  ReferenceDecoder::unescape(expected);
  property(text == expected, "both decoders return the same unescaped text");

  std::vector<char> bytes(text.begin(), text.end());
  decodeGsmEscapes(bytes);
  ReferenceDecoder::decode(expected);
  property(std::string(bytes.begin(), bytes.end()) == expected, "both decoders return the same decoded text");
  property(bytes.size() <= text.size(), "decoding never makes a text longer");
}

// Returns whether no part comes twice and all parts of a message have the same count. Joining then has the
// same result for every order of the parts.
bool isOrderFree(const Records& records) {
  std::set<std::pair<int, int>> seen;
  std::set<std::pair<int, int>> counts;
  std::set<int> references;
  for (const Json::Value& record : records) {
    if (!isPartOfMultipart(record)) continue;
    const int reference = record["part-id"].asInt();
    if (!seen.emplace(reference, record["part-index"].asInt()).second) return false;
    counts.emplace(reference, record["part-count"].asInt());
    references.insert(reference);
  }
  return counts.size() == references.size();
}

// Returns the texts and the members "parts" of the records, sorted.
std::multiset<std::string> texts(const Records& records) {
  std::multiset<std::string> found;
  for (const Json::Value& record : records)
    found.insert(record.get("message", "").asString() +
                 record.get("parts", Json::nullValue).toStyledString());
  return found;
}

// Returns the stored records after two passes. Each pass receives one half of `records`.
Records filedInTwoPasses(const Records& records) {
  const auto half = records.begin() + static_cast<std::ptrdiff_t>(records.size() / 2);
  Records filed = joinMultipartMessages(Records(records.begin(), half));
  Json::Value inbox(Json::arrayValue);
  for (const Json::Value& record : filed) inbox.append(record);
  Records updated;
  for (const Json::Value& record : joinMultipartMessages(Records(half, records.end())))
    if (!isPartOfMultipart(record) || !mergeWithStoredParts(updated, record, collectStoredParts(inbox)))
      filed.push_back(record);
  for (Json::Value& record : updated) {
    joinParts(record);
    *std::find_if(filed.begin(), filed.end(),
                  [&](const Json::Value& old) { return old["guid"] == record["guid"]; }) = record;
  }
  return filed;
}

void checkRecords(const Records& records, const std::vector<Message>& expected) {
  std::set<std::string> guids;
  auto record = records.begin();
  for (const Message& message : expected) {
    if (!message.sender) continue;
    property(record != records.end(), "every message with a sender becomes a record");
    property((*record)["source"] == *message.sender, "the sender is the value of the first addr: line");
    property(record->isMember("message") == message.text.has_value() &&
                 record->get("message", "").asString() == message.text.value_or(""),
             "the text is the decoded value of the first user-data: line");
    guids.insert((*record++)["guid"].asString());
  }
  property(record == records.end(), "only messages with a sender become records");
  property(guids.size() == records.size(), "no two records have the same guid");
}

void checkJoining(const Records& records) {
  if (!isOrderFree(records)) return;
  const auto expected = texts(joinMultipartMessages(records));
  property(texts(joinMultipartMessages(Records(records.rbegin(), records.rend()))) == expected,
           "joining does not depend on the order of arrival");
  property(texts(filedInTwoPasses(records)) == expected,
           "parts form the same messages in two passes as in one pass");
}
}  // namespace

extern "C" {

std::FILE* popen(const char* /*command*/, const char* mode) {
  return fmemopen(printed.data(), printed.size(), mode);
}

int pclose(std::FILE* pipe) { return std::fclose(pipe); }

int system(const char* command) {
  deletions += std::strstr(command, " delete ") != nullptr ? 1 : 0;
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  printed.assign(data, data + size);
  const std::vector<std::string> lines = pieces();
  for (const std::string& line : lines) checkDecoding(line);

  const std::vector<Message> expected = messages(lines);
  const Records records = parseListing(lines).records;
  checkRecords(records, expected);
  checkJoining(records);

  deletions = 0;
  SmsUtilsProvider provider;
  property(texts(provider.receiveMessages()) == texts(joinMultipartMessages(records)),
           "the provider returns the messages of the listing");
  property(deletions == (expected.empty() ? 0 : 1),
           "the provider deletes once if the listing has messages, else never");
  return 0;
}

}  // extern "C"
