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
