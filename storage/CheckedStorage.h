#pragma once

#include "storage/ICollectionStorage.h"
#include "storage/StorageFaults.h"

/// The message store as the loop uses it: an ICollectionStorage whose calls report success.
///
/// A record that a limit of 0 discards counts as saved. Both objects must outlive this one.
class CheckedStorage {
 public:
  CheckedStorage(ICollectionStorage& storage, const StorageFaults& faults);

  /// False when the record did not reach the folder of `status`.
  [[nodiscard]] bool save(const Json::Value& record, int status);

  void remove(const Json::Value& filter, int status);

  /// All records of `status`. `complete`, if given, is false when a file, or the folder, could not be read.
  [[nodiscard]] Json::Value load(int status, bool* complete = nullptr);

  /// False if a record did not reach `to`, or if a failed read may have hidden one under `from`.
  [[nodiscard]] bool move(const Json::Value& filter, int from, int to);

 private:
  ICollectionStorage& storage_;
  const StorageFaults& faults_;
};
