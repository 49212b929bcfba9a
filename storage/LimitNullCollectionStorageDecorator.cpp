#include "storage/LimitNullCollectionStorageDecorator.h"

#include <utility>

#include "storage/MessageStatus.h"

LimitNullCollectionStorageDecorator::LimitNullCollectionStorageDecorator(
    std::shared_ptr<ICollectionStorage> inner, std::uint32_t receivedLimit, std::uint32_t sentLimit)
    : inner(std::move(inner)), receivedLimit(receivedLimit), sentLimit(sentLimit) {}

void LimitNullCollectionStorageDecorator::save(const Json::Value& record, int status) {
  if (status == MessageStatus::Received && receivedLimit == 0) return;
  if ((status == MessageStatus::Sent || status == MessageStatus::Failed) && sentLimit == 0) return;
  inner->save(record, status);
}

void LimitNullCollectionStorageDecorator::remove(const Json::Value& filter, int status) {
  inner->remove(filter, status);
}

Json::Value LimitNullCollectionStorageDecorator::load(const Json::Value& filter, int status) {
  return inner->load(filter, status);
}

void LimitNullCollectionStorageDecorator::move(const Json::Value& filter, int from, int to) {
  inner->move(filter, from, to);
}
