#pragma once

#include "storage/ICollectionStorage.h"
#include "storage/StorageFaults.h"

/// The message store as the loop uses it: an ICollectionStorage whose calls report success.
///
/// A record that a limit of 0 discards counts as saved. Both objects must outlive this one.
class CheckedStorage {
 public:
  CheckedStorage(ICollectionStorage& storage, const StorageFaults& faults)
      : storage_(storage), faults_(faults) {}

  /// False when the record did not reach the folder of `status`.
  [[nodiscard]] bool save(const Json::Value& record, int status) {
    const unsigned before = faults_.failedSaves;
    storage_.save(record, status);
    return faults_.failedSaves == before;
  }

  void remove(const Json::Value& filter, int status) { storage_.remove(filter, status); }

  /// All records of `status`. `complete`, if given, is false when a file, or the folder, could not be read.
  [[nodiscard]] Json::Value load(int status, bool* complete = nullptr) {
    const unsigned before = faults_.failedReads;
    Json::Value records = storage_.load(Json::nullValue, status);
    if (complete != nullptr) *complete = faults_.failedReads == before;
    return records;
  }

  /// False if a record did not reach `to`, or if a failed read may have hidden one under `from`.
  [[nodiscard]] bool move(const Json::Value& filter, int from, int to) {
    const StorageFaults before = faults_;
    storage_.move(filter, from, to);
    return faults_.failedSaves == before.failedSaves && faults_.failedReads == before.failedReads;
  }

 private:
  ICollectionStorage& storage_;
  const StorageFaults& faults_;
};
