#include "daemon/Inbox.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "daemon/PartMerger.h"
#include "provider/MultipartJoiner.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {

namespace Key = MessageRecord::Key;

bool exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

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
  std::vector<Json::Value> parts = collectStoredParts(storage.load(MessageStatus::Received, &complete));
  if (mustBeComplete && !complete) return std::nullopt;
  // The spool could not hold a message that is merged into such a record.
  const auto isStrange = [](const Json::Value& record) { return !isNotable(record); };
  parts.erase(std::remove_if(parts.begin(), parts.end(), isStrange), parts.end());
  return parts;
}

}  // namespace

Inbox::Inbox(CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit)
    : storage_(storage), commands_(commands), inTransit_(inTransit) {}

void Inbox::fileLeft(const Spool::Pass& pass) {
  for (const unsigned number : pass.numbers) {
    if (waits_) return;
    std::optional<SpoolEntry> entry = inTransit_.read(number);
    if (!entry) continue;
    if (auto* const received = std::get_if<ReceivedBatch>(&*entry)) {
      NotedBatch batch(inTransit_, number, NotedBatch::Kind::Received, std::move(*received));
      fileLeftBatch(batch);
    } else if (auto* const merged = std::get_if<MergedBatch>(&*entry)) {
      NotedBatch batch(inTransit_, number, NotedBatch::Kind::Merged, std::move(*merged));
      fileLeftBatch(batch);
    }
  }
}

void Inbox::file(std::vector<Json::Value> records) {
  if (records.empty()) return;
  NotedBatch batch(inTransit_, inTransit_.takeReceived(), NotedBatch::Kind::Received,
                   {std::move(records), 0, 0});
  fileRange(batch, 0, batch.records.size(), Turn::First);
  if (!batch.settle()) batch.noteRest();
}

// Files one record at a time: two of them may be parts of the same message.
void Inbox::fileLeftBatch(NotedBatch& batch) {
  for (std::size_t place = batch.filed(); place < batch.records.size() && !waits_; ++place) {
    Json::Value& record = batch.records[place];
    const std::string file = inTransit_.fileOf(record, MessageStatus::Received);
    if (MessageRecord::isInFile(record, file)) {
      batch.setFiled(place);
      continue;
    }
    // Another message may have taken the guid while the note could not be read.
    if (batch.kind == NotedBatch::Kind::Received && exists(file))
      record[Key::Guid] = freeGuid(inTransit_, MessageRecord::guid(record));
    fileRange(batch, place, place + 1, Turn::Later);
  }
  batch.settle();
}

void Inbox::fileRange(NotedBatch& batch, std::size_t begin, std::size_t end, Turn turn) {
  std::optional<std::vector<Json::Value>> storedParts;  // read once, for the first part
  std::vector<Json::Value> updatedMultiparts;
  std::vector<std::size_t> mergedPlaces;
  for (std::size_t place = begin; place < end; ++place) {
    Orvel::Watchdog::feed();  // for each message: a large batch is no hang
    Json::Value& record = batch.records[place];
    if (isPartOfMultipart(record) && !waits_) {
      if (!storedParts) storedParts = loadStoredParts(storage_, turn == Turn::First);
      if (!storedParts) continue;  // the part waits for one pass, no longer
      if (mergeWithStoredParts(updatedMultiparts, record, *storedParts)) {
        mergedPlaces.push_back(place);
        continue;
      }
    }
    if (!MessageRecord::has(record, Key::Parts) && obey(batch, place, turn)) record[Key::IsSMSCommand] = true;
    if (save(record)) batch.setFiled(place);
  }
  if (!waits_ && !updatedMultiparts.empty())
    fileMerged(std::move(updatedMultiparts), batch, mergedPlaces, turn);
}

// Notes the merged messages, then removes the note of their parts, and only then replaces the stored files.
void Inbox::fileMerged(std::vector<Json::Value> records, NotedBatch& parts,
                       const std::vector<std::size_t>& places, Turn turn) {
  for (Json::Value& record : records) joinParts(record);
  unsigned number = 0;
  if (const std::optional<std::string> text = textOf(records))
    number = inTransit_.spool.add({stageOf(MergedBatch{}), *text});
  NotedBatch batch(inTransit_, number, NotedBatch::Kind::Merged, {std::move(records), 0, 0});
  for (const std::size_t place : places) parts.setFiled(place);
  parts.settle();
  for (std::size_t place = 0; place < batch.records.size(); ++place) {
    Orvel::Watchdog::feed();
    // A command in a concatenated message is obeyed, but its record is not marked.
    if (!MessageRecord::has(batch.records[place], Key::Parts)) obey(batch, place, turn);
    if (save(batch.records[place])) batch.setFiled(place);
  }
  if (!batch.settle()) batch.noteRest();
}

bool Inbox::obey(NotedBatch& batch, std::size_t place, Turn turn) {
  if (turn == Turn::First) return obeyNow(batch, place);
  if (!batch.wasOffered(place)) sayThatNotObeyed(batch, place);
  return false;
}

// Obeys a complete message if it is a command from a permitted sender. True when a command was executed.
bool Inbox::obeyNow(NotedBatch& batch, std::size_t place) {
  const Json::Value& record = batch.records[place];
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
  batch.setObeying(place);
  const bool executed = commands_.executeCommand(message, source);
  batch.setObeyed(place);
  if (executed) return true;
  ORVEL_LOG(ERROR, "Failed to execute command [%s]", message.c_str());
  return false;
}

void Inbox::sayThatNotObeyed(const NotedBatch& batch, std::size_t place) {
  const Json::Value& record = batch.records[place];
  const std::string text = MessageRecord::member(record, Key::Message).asString();
  const std::string source = MessageRecord::member(record, Key::Source).asString();
  const std::string guid = MessageRecord::guid(record);
  ParsedSMSCommand command;
  if (!commands_.isEnabled() || text.find('#') == std::string::npos) return;
  if (!commands_.parseCommand(text, command)) return;
  if (batch.wasBeingObeyed(place))
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
