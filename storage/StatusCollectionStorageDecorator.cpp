#include "storage/StatusCollectionStorageDecorator.h"

#include <utility>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"

StatusCollectionStorageDecorator::StatusCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner)
    : inner(std::move(inner)) {}

void StatusCollectionStorageDecorator::move(const Json::Value& filter, int from, int to) {
  const Json::Value records = load(filter, from);
  for (Json::Value record : records) {
    if (record.isObject()) {
      if (to == MessageStatus::Received)
        record.removeMember(MessageRecord::Key::Status);
      else
        record[MessageRecord::Key::Status] = MessageStatus::text(to);
    }
    remove(filter, from);
    save(record, to);
  }
}
