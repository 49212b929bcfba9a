#include "storage/SpoolEntry.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <utility>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"

namespace {
namespace Key = MessageRecord::Key;

constexpr const char* batchWords[] = {"received", "merged"};         // by Batch::Kind
constexpr const char* sendWords[] = {"sending", "sent", "refused"};  // by Send::Stage

std::string toText(const std::vector<Json::Value>& records) {
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  writer["commentStyle"] = "None";
  writer["emitUTF8"] = true;  // keeps bytes that are not UTF-8
  std::string text;
  for (const Json::Value& record : records) text += Json::writeString(writer, record) + '\n';
  return text;
}

// The records; none if a line is not JSON.
std::vector<Json::Value> fromText(const std::string& text) {
  std::vector<Json::Value> records;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    if (!MessageRecord::parse(line, records.emplace_back())) return {};
  return records;
}

// Guids go into shell commands unquoted, so a record with any other guid could not be filed.
bool hasFileName(const Json::Value& record) {
  const std::string guid = MessageRecord::guid(record);
  const auto isPlain = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           (c != '\0' && std::strchr("._-+:@,=%", c) != nullptr);
  };
  return !guid.empty() && guid != "." && guid != ".." && std::all_of(guid.begin(), guid.end(), isPlain);
}

bool isText(const Json::Value& value) { return value.isConvertibleTo(Json::stringValue); }

bool isValid(const Batch& batch) {
  return !batch.records.empty() && batch.begun <= batch.records.size() + 1 &&
         std::all_of(batch.records.begin(), batch.records.end(), isNotable);
}

bool isValid(const Send& send) {
  return hasFileName(send.record) &&
         (send.from == MessageStatus::Sending || send.from == MessageStatus::Failed);
}

std::string stage(const char* word, std::size_t number) { return word + ("-" + std::to_string(number)); }
}  // namespace

std::string stageOf(const Batch& batch) {
  return stage(batchWords[static_cast<std::size_t>(batch.kind)], batch.begun);
}

std::string stageOf(const Send& send) {
  return stage(sendWords[static_cast<std::size_t>(send.stage)], static_cast<std::size_t>(send.from));
}

bool isNotable(const Json::Value& record) {
  using MessageRecord::has, MessageRecord::member;
  const Json::Value& parts = member(record, Key::Parts);
  if (!hasFileName(record)) return false;
  if (!isText(member(record, Key::Message)) || !isText(member(record, Key::Source))) return false;
  if (has(record, Key::PartId) && !record[Key::PartId].isConvertibleTo(Json::intValue)) return false;
  if (!has(record, Key::Parts)) return true;
  return parts.isArray() && std::all_of(parts.begin(), parts.end(), isText);
}

std::optional<Spool::Note> noteOf(const Batch& batch) {
  if (!isValid(batch)) return std::nullopt;
  return Spool::Note{stageOf(batch), toText(batch.records)};
}

std::optional<Spool::Note> noteOf(const Send& send) {
  if (!isValid(send)) return std::nullopt;
  return Spool::Note{stageOf(send), toText({send.record})};
}

std::optional<SpoolEntry> entryOf(const Spool::Note& note) {
  std::vector<Json::Value> records = fromText(note.text);
  const unsigned long number = std::strtoul(&note.stage[note.stage.find('-') + 1], nullptr, 10);
  for (const Batch::Kind kind : {Batch::Kind::Received, Batch::Kind::Merged}) {
    Batch batch{kind, {}, number};
    if (stageOf(batch) != note.stage) continue;
    batch.records = std::move(records);
    if (isValid(batch)) return batch;
    return std::nullopt;
  }
  if (records.size() != 1) return std::nullopt;
  for (const Send::Stage stage : {Send::Stage::Begun, Send::Stage::Sent, Send::Stage::Refused}) {
    Send send{stage, records.front(), static_cast<int>(number)};
    if (stageOf(send) == note.stage && isValid(send)) return send;
  }
  return std::nullopt;
}

std::optional<SpoolEntry> readEntry(Spool& spool, const std::string& name) {
  const std::optional<Spool::Note> note = spool.read(name);
  if (!note) return std::nullopt;
  std::optional<SpoolEntry> entry = entryOf(*note);
  if (!entry) spool.setAside(name);
  return entry;
}
