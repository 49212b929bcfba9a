#include "daemon/Inbox.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "daemon/PartMerger.h"
#include "provider/MultipartJoiner.h"
#include "storage/Flush.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {
namespace Key = MessageRecord::Key;

std::string freeGuid(const InTransit& inTransit, const std::string& guid) {
  std::string free;
  unsigned ordinal = 0;
  do free = guid + std::to_string(ordinal++);
  while (inTransit.isTaken(free));
  return free;
}

// The stored parts; nullopt if a file that may hold one could not be read.
std::optional<std::vector<Json::Value>> loadStoredParts(CheckedStorage& storage, bool mustBeComplete) {
  bool complete = true;
  std::vector<Json::Value> parts;
  for (Json::Value& part : collectStoredParts(storage.load(MessageStatus::Received, &complete)))
    if (isNotable(part)) parts.push_back(std::move(part));  // the spool could hold the merged message
  if (mustBeComplete && !complete) return std::nullopt;
  return parts;
}
}  // namespace

Inbox::Inbox(CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit)
    : storage_(storage), commands_(commands), inTransit_(inTransit) {}

void Inbox::fileLeft(const Spool::Pass& pass) {
  for (const std::string& name : pass.names) {
    if (waits_) return;
    std::optional<SpoolEntry> entry = readEntry(inTransit_.spool, name);
    if (!entry || !std::holds_alternative<Batch>(*entry)) continue;
    Noted noted{name, std::get<Batch>(std::move(*entry))};
    fileLeftBatch(noted);
  }
}

void Inbox::file(std::vector<Json::Value> records) {
  if (records.empty()) return;
  Noted noted{inTransit_.takeReceived(), {Batch::Kind::Received, std::move(records)}};
  fileRange(noted, 0, noted.batch.records.size(), Turn::First);
  settle(noted, Turn::First);
}

// Files one record at a time: two of them may be parts of the same message.
void Inbox::fileLeftBatch(Noted& noted) {
  Batch& batch = noted.batch;
  for (std::size_t place = 0; place < batch.records.size() && !waits_; ++place) {
    Json::Value& record = batch.records[place];
    const std::string file = inTransit_.fileOf(record, MessageStatus::Received);
    if (MessageRecord::isInFile(record, file)) {
      noted.isFiled[place] = true;
      continue;
    }
    // Another message may have taken the guid while the note could not be read.
    if (batch.kind == Batch::Kind::Received && inTransit_.isTaken(MessageRecord::guid(record)))
      record[Key::Guid] = freeGuid(inTransit_, MessageRecord::guid(record));
    fileRange(noted, place, place + 1, Turn::Later);
  }
  settle(noted, Turn::Later);
}

void Inbox::fileRange(Noted& noted, std::size_t begin, std::size_t end, Turn turn) {
  std::optional<std::vector<Json::Value>> storedParts;  // read once, for the first part
  std::vector<Json::Value> updatedMultiparts;
  std::vector<std::size_t> mergedPlaces;
  for (std::size_t place = begin; place < end; ++place) {
    Orvel::Watchdog::feed();  // for each message: a large batch is no hang
    Json::Value& record = noted.batch.records[place];
    if (isPartOfMultipart(record) && !waits_) {
      if (!storedParts) storedParts = loadStoredParts(storage_, turn == Turn::First);
      if (!storedParts) continue;  // the part waits for one pass, no longer
      if (mergeWithStoredParts(updatedMultiparts, record, *storedParts)) {
        mergedPlaces.push_back(place);
        continue;
      }
    }
    if (!MessageRecord::has(record, Key::Parts) && obey(noted, place, turn)) record[Key::IsSMSCommand] = true;
    noted.isFiled[place] = save(record);
  }
  if (!waits_ && !updatedMultiparts.empty())
    fileMerged(std::move(updatedMultiparts), noted, mergedPlaces, turn);
}

// Notes the merged messages, then removes the note of their parts, and only then replaces the stored files.
void Inbox::fileMerged(std::vector<Json::Value> records, Noted& parts, const std::vector<std::size_t>& places,
                       Turn turn) {
  for (Json::Value& record : records) joinParts(record);
  Noted noted{"", {Batch::Kind::Merged, std::move(records)}};
  if (const std::optional<Spool::Note> note = noteOf(noted.batch)) noted.name = inTransit_.spool.add(*note);
  for (const std::size_t place : places) parts.isFiled[place] = true;
  if (!settle(parts, turn)) return;  // the next pass merges these parts again
  for (std::size_t place = 0; place < noted.batch.records.size(); ++place) {
    Orvel::Watchdog::feed();
    // A command in a concatenated message is obeyed, but its record is not marked.
    if (!MessageRecord::has(noted.batch.records[place], Key::Parts)) obey(noted, place, turn);
    noted.isFiled[place] = save(noted.batch.records[place]);
  }
  settle(noted, Turn::First);
}

bool Inbox::obey(Noted& noted, std::size_t place, Turn turn) {
  if (turn == Turn::First) return obeyNow(noted, place);
  if (place + 1 >= noted.batch.begun) sayThatNotObeyed(noted.batch, place);
  return false;
}

// Obeys a complete message if it is a command from a permitted sender. True when a command was executed.
bool Inbox::obeyNow(Noted& noted, std::size_t place) {
  const Json::Value& record = noted.batch.records[place];
  if (!commands_.isEnabled()) {
    ORVEL_LOG(WARNING, "SMS commands not enabled");
    return false;
  }
  ORVEL_LOG(WARNING, "SMS commands is enabled");
  if (!MessageRecord::has(record, Key::Message) || !MessageRecord::has(record, Key::Source)) return false;
  const std::string message = record[Key::Message].asString();
  const std::string source = record[Key::Source].asString();
  ORVEL_LOG(WARNING, "SMS commands processing message [%s] from recipient [%s]", message.c_str(),
            source.c_str());
  if (!commands_.validateSMSCommand(message, source)) return false;
  ORVEL_LOG(WARNING, "SMS commands executing command");
  noted.batch.begun = place + 1;
  inTransit_.spool.rename(noted.name, stageOf(noted.batch), false);
  if (commands_.executeCommand(message, source)) return true;
  ORVEL_LOG(ERROR, "Failed to execute command [%s]", message.c_str());
  return false;
}

void Inbox::sayThatNotObeyed(const Batch& batch, std::size_t place) {
  const Json::Value& record = batch.records[place];
  const std::string text = MessageRecord::member(record, Key::Message).asString();
  const std::string source = MessageRecord::member(record, Key::Source).asString();
  const std::string guid = MessageRecord::guid(record);
  ParsedSMSCommand command;
  if (!commands_.isEnabled() || text.find('#') == std::string::npos) return;
  if (!commands_.parseCommand(text, command)) return;
  if (place < batch.begun)
    ORVEL_LOG(WARNING, "SMS command in message %s from %s may not have been obeyed: its pass was cut off",
              guid.c_str(), source.c_str());
  else
    ORVEL_LOG(WARNING, "SMS command in message %s from %s is not obeyed: an earlier pass was cut off",
              guid.c_str(), source.c_str());
}

bool Inbox::save(const Json::Value& record) {
  if (waits_) return false;
  waits_ = !storage_.save(record, MessageStatus::Received);
  return !waits_;
}

// Flushes what is filed to the disk, and then removes the note. If records are left, replaces the note by one
// with only those. False if the note still holds a record that is filed.
bool Inbox::settle(Noted& noted, Turn turn) {
  std::vector<std::string> files;
  Batch rest{noted.batch.kind, {}};
  for (std::size_t place = 0; place < noted.isFiled.size(); ++place) {
    Json::Value& record = noted.batch.records[place];
    if (noted.isFiled[place])
      files.push_back(inTransit_.fileOf(record, MessageStatus::Received));
    else
      rest.records.push_back(record);
  }
  if (turn == Turn::Later && files.empty()) return true;
  if (!flushFiles(files)) return false;
  if (rest.records.empty()) {
    if (!inTransit_.spool.remove(noted.name)) return false;
    noted = {};
    return true;
  }
  // In the first turn, every command in the rest was offered. A later turn stops at the first record left.
  rest.begun = rest.records.size() + 1;
  if (turn == Turn::Later) rest.begun = noted.batch.begun - std::min(noted.batch.begun, files.size());
  const std::optional<Spool::Note> note = noteOf(rest);
  return !note || inTransit_.spool.replace(noted.name, *note);
}
