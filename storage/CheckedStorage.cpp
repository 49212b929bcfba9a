#include "storage/CheckedStorage.h"

CheckedStorage::CheckedStorage(ICollectionStorage& storage, const StorageFaults& faults)
    : storage_(storage), faults_(faults) {}

bool CheckedStorage::save(const Json::Value& record, int status) {
  const unsigned before = faults_.failedSaves;
  storage_.save(record, status);
  return faults_.failedSaves == before;
}

void CheckedStorage::remove(const Json::Value& filter, int status) { storage_.remove(filter, status); }

Json::Value CheckedStorage::load(int status, bool* complete) {
  const unsigned before = faults_.failedReads;
  Json::Value records = storage_.load(Json::nullValue, status);
  if (complete != nullptr) *complete = faults_.failedReads == before;
  return records;
}

bool CheckedStorage::move(const Json::Value& filter, int from, int to) {
  const StorageFaults before = faults_;
  storage_.move(filter, from, to);
  return faults_.failedSaves == before.failedSaves && faults_.failedReads == before.failedReads;
}
