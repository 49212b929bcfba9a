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

int statusAfter(const Send& send) {
  return send.stage == Send::Stage::Sent ? MessageStatus::Sent : MessageStatus::Failed;
}

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
    std::optional<SpoolEntry> entry = readEntry(inTransit_.spool, name);
    if (entry && std::holds_alternative<Send>(*entry)) takeIn(name, std::get<Send>(std::move(*entry)));
  }
  if (left_.empty()) return;
  // Each pass begins with another record, so that one that cannot be filed does not block the others.
  const auto first = static_cast<std::ptrdiff_t>(inTransit_.turn++ % left_.size());
  std::rotate(left_.begin(), left_.begin() + first, left_.end());
  std::set<int> unusable;
  for (const Noted& noted : std::exchange(left_, {})) {
    const int to = statusAfter(noted.send);
    const bool filed = unusable.count(to) == 0 && fileAgain(noted.send);
    if (!filed) unusable.insert(to);
    settle(noted, filed);
  }
}

bool Outbox::send(const Json::Value& record, int from) {
  Orvel::Watchdog::feed();
  inTransit_.expectSend(record, from);
  const bool sent = provider_.sendMessage(record);
  inTransit_.answered(sent);
  const Send send{sent ? Send::Stage::Sent : Send::Stage::Refused, record, from};
  const bool filed = file(send);
  settle({inTransit_.takeSend(), send}, filed);
  return sent;
}

bool Outbox::isAnswered(const Json::Value& record, int from) const {
  return std::any_of(left_.begin(), left_.end(), [&](const Noted& noted) {
    const Send& send = noted.send;
    return send.from == from && MessageRecord::guid(send.record) == MessageRecord::guid(record) &&
           liesUnderFrom(send);
  });
}

bool Outbox::wasInterrupted(const Json::Value& record) const {
  return inTransit_.interrupted.count(MessageRecord::guid(record)) != 0;
}

void Outbox::takeIn(std::string name, Send send) {
  if (send.stage == Send::Stage::Begun) {
    const std::string guid = MessageRecord::guid(send.record);
    ORVEL_LOG(WARNING, "Sending message %s was begun and never answered: it counts as failed", guid.c_str());
    inTransit_.interrupted.insert(guid);
    send.stage = Send::Stage::Refused;
    inTransit_.spool.rename(name, stageOf(send), true);
  }
  left_.push_back({std::move(name), std::move(send)});
}

bool Outbox::fileAgain(const Send& send) {
  Orvel::Watchdog::feed();
  const int to = statusAfter(send);
  const Json::Value record = recordAfter(send);
  if (liesUnderFrom(send))
    storage_.remove(send.record, send.from);
  else if (MessageRecord::isInFile(record, inTransit_.fileOf(record, MessageStatus::Sent)))
    return true;  // a later attempt has sent it, while this note could not be read
  return MessageRecord::isInFile(record, inTransit_.fileOf(record, to)) || storage_.save(record, to);
}

// Flushes a filed record to the disk, and then removes its note. Keeps both if the record could not be filed.
// Whether the record has left its folder is asked at once: another program may queue the same message again.
void Outbox::settle(const Noted& noted, bool filed) {
  const auto& [name, send] = noted;
  const int to = statusAfter(send);
  const bool isLeft = !filed || (send.from != to && liesUnderFrom(send));
  if (name.empty()) return;
  if (!isLeft && flushFiles({inTransit_.fileOf(send.record, to), inTransit_.fileOf(send.record, send.from)}))
    inTransit_.spool.remove(name);
  else
    left_.push_back(noted);
}

bool Outbox::file(const Send& send) {
  const int to = statusAfter(send);
  if (send.from != to) return storage_.move(send.record, send.from, to);
  storage_.remove(send.record, to);
  return storage_.save(afterFailedRetry(send.record), to);
}

bool Outbox::liesUnderFrom(const Send& send) const {
  return MessageRecord::isInFile(send.record, inTransit_.fileOf(send.record, send.from));
}
