#pragma once

#include <memory>

#include "storage/ICollectionStorage.h"

/// Moves records, and writes the new status into their "status". All other calls go to the inner storage.
class StatusCollectionStorageDecorator final : public ICollectionStorage {
 public:
  explicit StatusCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner);

  void save(const Json::Value& record, int status) override { inner->save(record, status); }
  void remove(const Json::Value& filter, int status) override { inner->remove(filter, status); }
  Json::Value load(const Json::Value& filter, int status) override { return inner->load(filter, status); }

  /// For each record that matches: removes by the filter (not by the record) from `from`, and saves a copy
  /// with its "status" under `to`. A copy that goes to Received has no "status". With a null filter, the
  /// first removal thus empties `from`. The later removals fail and are logged, but every record is saved.
  void move(const Json::Value& filter, int from, int to) override;

 private:
  const std::shared_ptr<ICollectionStorage> inner;
};
