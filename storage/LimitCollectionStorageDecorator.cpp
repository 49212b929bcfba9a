#include "storage/LimitCollectionStorageDecorator.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"

namespace {
Json::Value filterOfSmallest(const std::vector<std::string>& guids) {
  Json::Value filter(Json::objectValue);
  filter[MessageRecord::Key::Guid] = *std::min_element(guids.begin(), guids.end());
  return filter;
}
}  // namespace

LimitCollectionStorageDecorator::LimitCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner,
                                                                 std::uint32_t receivedLimit,
                                                                 std::uint32_t sentLimit)
    : inner(std::move(inner)), receivedLimit(receivedLimit), sentLimit(sentLimit) {}

void LimitCollectionStorageDecorator::save(const Json::Value& record, int status) {
  if (status == MessageStatus::Received && receivedLimit != 0)
    makeRoomInInbox();
  else if (status >= MessageStatus::Sending && status <= MessageStatus::Failed && sentLimit != 0)
    makeRoomInOutbox();
  inner->save(record, status);
}

void LimitCollectionStorageDecorator::makeRoomInInbox() {
  std::vector<std::string> guids;
  for (const Json::Value& record : load(Json::nullValue, MessageStatus::Received))
    guids.push_back(MessageRecord::guid(record));
  if (guids.size() < receivedLimit || guids.empty()) return;
  remove(filterOfSmallest(guids), MessageStatus::Received);
}

void LimitCollectionStorageDecorator::makeRoomInOutbox() {
  constexpr int outbox[] = {MessageStatus::Sending, MessageStatus::Sent, MessageStatus::Failed};
  std::size_t count = 0;
  std::vector<std::string> guids;
  for (const int status : outbox) {
    for (const Json::Value& record : load(Json::nullValue, status)) {
      ++count;
      if (MessageRecord::has(record, MessageRecord::Key::Guid)) guids.push_back(MessageRecord::guid(record));
    }
  }
  if (count < sentLimit || guids.empty()) return;
  const Json::Value filter = filterOfSmallest(guids);
  for (const int status : outbox) {
    if (load(filter, status).empty()) continue;
    remove(filter, status);
    return;
  }
}
