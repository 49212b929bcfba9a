#include "daemon/Outbox.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "storage/Flush.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {

namespace Key = MessageRecord::Key;

int statusAfter(bool sent) { return sent ? MessageStatus::Sent : MessageStatus::Failed; }

int statusAfter(const Send& send) { return statusAfter(send.stage == Send::Stage::Sent); }

Json::Value afterFailedRetry(Json::Value record) {
  record[Key::Retries] = MessageRecord::retriesAfterFailure(record);
  return record;
}

// The record to file after the answer.
Json::Value recordAfter(const Send& send) {
  const int to = statusAfter(send);
  Json::Value record = send.from == to ? afterFailedRetry(send.record) : send.record;
  record[Key::Status] = MessageStatus::text(to);
  return record;
}

}  // namespace

Outbox::Outbox(SmsProvider& provider, CheckedStorage& storage, InTransit& inTransit)
    : provider_(provider), storage_(storage), inTransit_(inTransit) {}

void Outbox::fileLeft(const Spool::Pass& pass) {
  for (const std::string& name : pass.names) {
    std::optional<SpoolEntry> entry = inTransit_.read(name);
    if (entry && std::holds_alternative<Send>(*entry)) takeIn(name, std::get<Send>(std::move(*entry)));
  }
  if (answered_.empty()) return;
  // Each pass begins with another record, so that one that cannot be filed does not block the others.
  const auto first = static_cast<std::ptrdiff_t>(inTransit_.turn++ % answered_.size());
  std::rotate(answered_.begin(), answered_.begin() + first, answered_.end());
  std::set<int> unusable;
  for (Noted& noted : answered_) {
    const int to = statusAfter(noted.send);
    if (unusable.count(to) != 0) continue;
    fileAgain(noted);
    if (!noted.isFiled) unusable.insert(to);
  }
  settle();
}

bool Outbox::send(const Json::Value& record, int from) {
  Orvel::Watchdog::feed();
  inTransit_.expectSend(record, from);
  const bool sent = provider_.sendMessage(record);
  inTransit_.answered(sent);
  const bool filed = file(record, from, sent);
  if (auto noted = inTransit_.takeSend())
    answered_.push_back({noted->first, noted->second, filed && !isLeftUnderFrom(noted->second)});
  return sent;
}

bool Outbox::isAnswered(const Json::Value& record, int from) const {
  return std::any_of(answered_.begin(), answered_.end(), [&](const Noted& noted) {
    const Send& send = noted.send;
    return !noted.isFiled && send.from == from &&
           MessageRecord::guid(send.record) == MessageRecord::guid(record) && liesUnderFrom(send);
  });
}

bool Outbox::wasInterrupted(const Json::Value& record) const {
  return inTransit_.interrupted.count(MessageRecord::guid(record)) != 0;
}

void Outbox::settle() {
  // If an exception ended a send before the answer, the message stays in its folder, without a note.
  const auto interrupted = inTransit_.takeSend();
  if (interrupted && interrupted->second.stage == Send::Stage::Begun)
    inTransit_.spool.remove(interrupted->first);
  const auto isLeft = [](const Noted& noted) { return !noted.isFiled; };
  const auto done = std::stable_partition(answered_.begin(), answered_.end(), isLeft);
  std::vector<std::string> files;
  for (auto noted = done; noted != answered_.end(); ++noted)
    for (const int status : {statusAfter(noted->send), noted->send.from})
      files.push_back(inTransit_.fileOf(noted->send.record, status));
  if (!flushFiles(files)) return;
  for (auto noted = done; noted != answered_.end(); ++noted) inTransit_.spool.remove(noted->name);
  answered_.erase(done, answered_.end());
}

void Outbox::takeIn(std::string name, Send send) {
  if (send.stage == Send::Stage::Begun) {
    const std::string guid = MessageRecord::guid(send.record);
    ORVEL_LOG(WARNING, "Sending message %s was begun and never answered: it counts as failed", guid.c_str());
    inTransit_.interrupted.insert(guid);
    send.stage = Send::Stage::Refused;
    inTransit_.spool.rename(name, stageOf(send), true);
  }
  answered_.push_back({std::move(name), std::move(send)});
}

void Outbox::fileAgain(Noted& noted) {
  Orvel::Watchdog::feed();
  const Send& send = noted.send;
  const int to = statusAfter(send);
  const Json::Value record = recordAfter(send);
  if (liesUnderFrom(send)) storage_.remove(send.record, send.from);
  const bool filed =
      MessageRecord::isInFile(record, inTransit_.fileOf(record, to)) || storage_.save(record, to);
  noted.isFiled = filed && !isLeftUnderFrom(send);
}

bool Outbox::file(const Json::Value& record, int from, bool sent) {
  if (sent || from == MessageStatus::Sending) return storage_.move(record, from, statusAfter(sent));
  storage_.remove(record, from);
  return storage_.save(afterFailedRetry(record), from);
}

// Whether the record should have left its folder, but did not. Asked at once: another program may queue the
// same message again.
bool Outbox::isLeftUnderFrom(const Send& send) const {
  return send.from != statusAfter(send) && liesUnderFrom(send);
}

bool Outbox::liesUnderFrom(const Send& send) const {
  return MessageRecord::isInFile(send.record, inTransit_.fileOf(send.record, send.from));
}
