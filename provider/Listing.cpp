#include "provider/Listing.h"

#include <cstdio>
#include <cstring>
#include <ctime>

#include "provider/UserData.h"
#include "storage/MessageRecord.h"
#include "support/Logger.h"
#include "support/Text.h"

namespace {
namespace Key = MessageRecord::Key;

constexpr char indexMarker[] = "index";
constexpr char senderMarker[] = "addr:";
constexpr char serviceCentreMarker[] = "smsc-addr:";
constexpr char userDataMarker[] = "user-data:";
constexpr std::size_t recordsBeforeFirstMessage = 99;

bool contains(const std::string& line, const char* marker) { return line.find(marker) != std::string::npos; }

// Skips `marker`, which begins at `at`, and the character after `marker`. Returns the trimmed rest of `line`.
std::string valueBehind(const std::string& line, std::size_t at, const char* marker) {
  const std::size_t begin = at + std::strlen(marker) + 1;
  return begin < line.size() ? Orvel::Text::trim(line.substr(begin)) : "";
}

std::string withoutQuotes(std::string text) {
  if (!text.empty() && text.front() == '"') text.erase(0, 1);
  if (!text.empty() && text.back() == '"') text.pop_back();
  return text;
}

void parseLine(const std::string& line, Json::Value& record) {
  const std::size_t sender = line.find(senderMarker);
  if (sender != std::string::npos && !contains(line, serviceCentreMarker) &&
      !MessageRecord::has(record, Key::Source))
    record[Key::Source] = valueBehind(line, sender, senderMarker);

  const std::size_t userData = line.find(userDataMarker);
  if (userData != std::string::npos && !MessageRecord::has(record, Key::Message))
    record[Key::Message] = decodeUserData(withoutQuotes(valueBehind(line, userData, userDataMarker)), record);
}

void stamp(Json::Value& record, unsigned& ordinal, const std::function<bool(const std::string&)>& isTaken) {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  char text[80];
  std::strftime(text, sizeof(text), "%Y%m%d%H%M%S", local);
  std::string guid;
  do {
    char ordinalText[16];
    std::snprintf(ordinalText, sizeof(ordinalText), "%02u", ordinal++);
    guid = std::string(text) + ordinalText;
  } while (isTaken(guid));
  record[Key::Guid] = guid;
  std::strftime(text, sizeof(text), "%Y/%m/%d %X", local);
  record[Key::Timestamp] = text;
}

void finishMessage(Json::Value& record, std::vector<Json::Value>& records, unsigned& ordinal,
                   const std::function<bool(const std::string&)>& isTaken) {
  if (!MessageRecord::has(record, Key::Source)) {
    ORVEL_LOG(WARNING, "SMS recipient is empty");
    return;
  }
  stamp(record, ordinal, isTaken);
  ORVEL_LOG(INFO, "New sms from %s, message: %s", record[Key::Source].asCString(),
            MessageRecord::member(record, Key::Message).asString().c_str());
  records.push_back(std::move(record));
}
}  // namespace

Listing parseListing(const std::vector<std::string>& lines,
                     const std::function<bool(const std::string& guid)>& isTaken) {
  Listing listing;
  unsigned ordinal = 0;
  auto line = lines.begin();
  while (line != lines.end()) {
    if (!contains(*line, indexMarker)) {
      // Only lines before the first message are skipped. `records` is empty here: the limit has no effect.
      if (listing.records.size() == recordsBeforeFirstMessage) break;
      ++line;
      continue;
    }
    Json::Value record;
    for (++line; line != lines.end() && !contains(*line, indexMarker); ++line) parseLine(*line, record);
    finishMessage(record, listing.records, ordinal, isTaken);
    listing.foundMessage = true;
  }
  return listing;
}
