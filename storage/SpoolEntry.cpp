#include "storage/SpoolEntry.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <sstream>
#include <utility>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"

namespace {

constexpr char receivedStage[] = "received";
constexpr char mergedStage[] = "merged";
constexpr char sendingStage[] = "sending";
constexpr char sentStage[] = "sent";
constexpr char refusedStage[] = "refused";
constexpr char filedSuffix[] = "-filed";
constexpr char obeyingSuffix[] = "-obeying";

namespace Key {
using namespace MessageRecord::Key;
constexpr char record[] = "record";
constexpr char from[] = "from";
constexpr char identity[] = "identity";
}  // namespace Key

// Enough for every record that MessageRecord::parse accepts, and the levels around it.
constexpr int deepestNesting = 1100;

std::string toText(const Json::Value& value) {
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  writer["commentStyle"] = "None";
  writer["emitUTF8"] = true;  // keeps bytes that are not UTF-8
  return Json::writeString(writer, value);
}

bool fromText(const std::string& text, Json::Value& value) {
  Json::CharReaderBuilder reader;
  Json::CharReaderBuilder::strictMode(&reader.settings_);
  reader["stackLimit"] = deepestNesting;
  std::istringstream stream(text);
  try {
    return Json::parseFromStream(reader, stream, &value, nullptr);
  } catch (const Json::Exception&) {
    return false;  // the nesting is too deep
  }
}

// Guids go into shell commands unquoted, so a record with any other guid could not be filed.
bool isFileName(const std::string& guid) {
  const auto isPlain = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           (c != '\0' && std::strchr("._-+:@,=%", c) != nullptr);
  };
  return !guid.empty() && guid != "." && guid != ".." && std::all_of(guid.begin(), guid.end(), isPlain);
}

bool isText(const Json::Value& value) { return value.isConvertibleTo(Json::stringValue); }

bool isSend(const Send& send) {
  return isFileName(MessageRecord::guid(send.record)) && !send.identity.empty() &&
         (send.from == MessageStatus::Sending || send.from == MessageStatus::Failed);
}

// Removes a number such as "-3" from the front of `text` and reads it into `count`.
bool readCount(std::string& text, std::size_t& count) {
  if (text.empty() || text[0] != '-') return false;
  const char* const end = text.data() + text.size();
  const auto [point, error] = std::from_chars(text.data() + 1, end, count);
  if (error != std::errc()) return false;
  text.erase(0, static_cast<std::size_t>(point - text.data()));
  return true;
}

template <typename Kind>
std::optional<SpoolEntry> parseBatch(std::string counts, Json::Value& value) {
  Kind batch;
  if (!readCount(counts, batch.filed) || !readCount(counts, batch.offered)) return std::nullopt;
  batch.obeying = counts == obeyingSuffix;
  if (!counts.empty() && !batch.obeying) return std::nullopt;
  if (!value.isArray() || value.empty() || !std::all_of(value.begin(), value.end(), isNotable))
    return std::nullopt;
  const std::size_t begun = batch.offered + (batch.obeying ? 1 : 0);
  if (batch.filed > batch.offered || batch.offered > value.size() || begun > value.size())
    return std::nullopt;
  batch.records.reserve(value.size());
  for (Json::Value& record : value) batch.records.push_back(std::move(record));
  return batch;
}

std::optional<Send> parseSend(const Json::Value& value) {
  if (!value.isObject() || value.size() != 3) return std::nullopt;
  const Json::Value& from = value[Key::from];
  if (!from.isInt() || !value[Key::identity].isString()) return std::nullopt;
  Send send{value[Key::record], from.asInt(), value[Key::identity].asString()};
  if (!isSend(send)) return std::nullopt;
  return send;
}

std::string countsOf(const Batch& batch) {
  const std::string counts = "-" + std::to_string(batch.filed) + "-" + std::to_string(batch.offered);
  return batch.obeying ? counts + obeyingSuffix : counts;
}

// The rest of the stage after `kind`; nullopt for a stage of another kind.
std::optional<std::string> behind(const std::string& stage, const std::string& kind) {
  if (stage.compare(0, kind.size(), kind) != 0) return std::nullopt;
  return stage.substr(kind.size());
}

}  // namespace

std::string stageOf(const ReceivedBatch& batch) { return receivedStage + countsOf(batch); }

std::string stageOf(const MergedBatch& batch) { return mergedStage + countsOf(batch); }

std::string stageOf(const BegunSend& /*send*/) { return sendingStage; }

std::string stageOf(const AnsweredSend& send) {
  const std::string stage = send.sent ? sentStage : refusedStage;
  return send.filed ? stage + filedSuffix : stage;
}

bool isNotable(const Json::Value& record) {
  using MessageRecord::has, MessageRecord::member;
  const Json::Value& parts = member(record, Key::Parts);
  if (!isFileName(MessageRecord::guid(record))) return false;
  if (!isText(member(record, Key::Message)) || !isText(member(record, Key::Source))) return false;
  if (has(record, Key::PartId) && !record[Key::PartId].isConvertibleTo(Json::intValue)) return false;
  if (!has(record, Key::Parts)) return true;
  return parts.isArray() && std::all_of(parts.begin(), parts.end(), isText);
}

std::optional<std::string> textOf(const std::vector<Json::Value>& records) {
  if (records.empty() || !std::all_of(records.begin(), records.end(), isNotable)) return std::nullopt;
  std::string text;
  for (const Json::Value& record : records) text += (text.empty() ? "[" : ",") + toText(record);
  return text + "]";
}

std::optional<std::string> textOf(const Send& send) {
  if (!isSend(send)) return std::nullopt;
  Json::Value value(Json::objectValue);
  value[Key::record] = send.record;
  value[Key::from] = send.from;
  value[Key::identity] = send.identity;
  return toText(value);
}

std::optional<SpoolEntry> parseEntry(const Spool::Note& note) {
  Json::Value value;
  if (!fromText(note.text, value)) return std::nullopt;
  if (const auto counts = behind(note.stage, receivedStage)) return parseBatch<ReceivedBatch>(*counts, value);
  if (const auto counts = behind(note.stage, mergedStage)) return parseBatch<MergedBatch>(*counts, value);
  const std::optional<Send> send = parseSend(value);
  if (!send) return std::nullopt;
  if (note.stage == sendingStage) return BegunSend{*send};
  for (const bool sent : {false, true}) {
    for (const bool filed : {false, true}) {
      AnsweredSend answered{*send, sent, filed};
      if (note.stage == stageOf(answered)) return answered;
    }
  }
  return std::nullopt;
}
