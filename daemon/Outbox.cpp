#include "daemon/Outbox.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "daemon/SendInProgress.h"
#include "storage/Flush.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {

namespace Key = MessageRecord::Key;

int statusAfter(bool sent) { return sent ? MessageStatus::Sent : MessageStatus::Failed; }

Json::Value afterFailedRetry(Json::Value record) {
  record[Key::Retries] = MessageRecord::retriesAfterFailure(record);
  return record;
}

// The record to file after the answer.
Json::Value recordAfter(const AnsweredSend& send) {
  const bool isRetry = send.from == MessageStatus::Failed;
  Json::Value record = isRetry && !send.sent ? afterFailedRetry(send.record) : send.record;
  record[Key::Status] = MessageStatus::text(statusAfter(send.sent));
  return record;
}

}  // namespace

Outbox::Outbox(SmsProvider& provider, CheckedStorage& storage, InTransit& inTransit)
    : provider_(provider), storage_(storage), inTransit_(inTransit) {}

void Outbox::fileLeft(const Spool::Pass& pass) {
  for (const unsigned number : pass.numbers)
    if (std::optional<SpoolEntry> entry = inTransit_.read(number)) takeIn(number, std::move(*entry));
  if (answered_.empty()) return;
  // Each pass begins with another record, so that one that cannot be filed does not block the others.
  const auto first = static_cast<std::ptrdiff_t>(inTransit_.turn % answered_.size());
  ++inTransit_.turn;
  std::rotate(answered_.begin(), answered_.begin() + first, answered_.end());
  std::set<int> unusable;
  for (Answered& answered : answered_) {
    const int to = statusAfter(answered.send.sent);
    if (unusable.count(to) != 0) continue;
    fileAgain(answered);
    if (!answered.send.filed) unusable.insert(to);
  }
  settle();
}

bool Outbox::send(const Json::Value& record, int from) {
  Orvel::Watchdog::feed();
  SendInProgress sending(inTransit_, record, from);
  const bool sent = provider_.sendMessage(record);
  sending.answer(sent);
  const bool filed = file(record, from, sent);
  if (const unsigned number = sending.release()) {
    answered_.push_back({number, {sending.send(), sent, false}});
    if (filed) setFiled(answered_.back());
  }
  return sent;
}

bool Outbox::isAnswered(const Json::Value& record, int from) const {
  return std::any_of(answered_.begin(), answered_.end(), [&](const Answered& answered) {
    return answered.send.from == from &&
           MessageRecord::guid(answered.send.record) == MessageRecord::guid(record) &&
           liesUnderFrom(answered.send);
  });
}

bool Outbox::wasInterrupted(const Json::Value& record) const {
  return inTransit_.interrupted.count(MessageRecord::guid(record)) != 0;
}

void Outbox::settle() {
  const auto isDone = [this](const Answered& answered) {
    const AnsweredSend& send = answered.send;
    return send.filed && (send.from == statusAfter(send.sent) || !liesUnderFrom(send));
  };
  const auto done = std::stable_partition(answered_.begin(), answered_.end(), std::not_fn(isDone));
  std::vector<std::string> files;
  for (auto answered = done; answered != answered_.end(); ++answered)
    for (const int status : {statusAfter(answered->send.sent), answered->send.from})
      files.push_back(inTransit_.fileOf(answered->send.record, status));
  if (!flushFiles(files)) return;
  for (auto answered = done; answered != answered_.end(); ++answered)
    inTransit_.spool.remove(answered->number);
  answered_.erase(done, answered_.end());
}

void Outbox::takeIn(unsigned number, SpoolEntry entry) {
  if (auto* const begun = std::get_if<BegunSend>(&entry)) {
    const std::string guid = MessageRecord::guid(begun->record);
    ORVEL_LOG(WARNING, "Sending message %s was begun and never answered: it counts as failed", guid.c_str());
    inTransit_.interrupted.insert(guid);
    AnsweredSend answered{{std::move(*begun)}, false, false};
    inTransit_.spool.rename(number, stageOf(answered), true);
    answered_.push_back({number, std::move(answered)});
  } else if (auto* const answered = std::get_if<AnsweredSend>(&entry)) {
    answered_.push_back({number, std::move(*answered)});
  }
}

void Outbox::fileAgain(Answered& answered) {
  Orvel::Watchdog::feed();
  const AnsweredSend& send = answered.send;
  const int to = statusAfter(send.sent);
  const Json::Value record = recordAfter(send);
  Json::Value filter;
  filter[Key::Guid] = send.record[Key::Guid];
  if (liesUnderFrom(send)) storage_.remove(filter, send.from);
  if (send.filed) return;
  if (MessageRecord::isInFile(record, inTransit_.fileOf(record, to)) || storage_.save(record, to))
    setFiled(answered);
}

void Outbox::setFiled(Answered& answered) {
  answered.send.filed = true;
  inTransit_.spool.rename(answered.number, stageOf(answered.send), false);
}

bool Outbox::file(const Json::Value& record, int from, bool sent) {
  if (sent || from == MessageStatus::Sending) return storage_.move(record, from, statusAfter(sent));
  storage_.remove(record, from);
  return storage_.save(afterFailedRetry(record), from);
}

bool Outbox::liesUnderFrom(const Send& send) const {
  return identityOf(inTransit_.fileOf(send.record, send.from)) == send.identity;
}
