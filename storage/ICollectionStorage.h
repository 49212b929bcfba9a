#pragma once

#include <json/json.h>

/// The message store as the daemon's loop sees it: records by MessageStatus. Filters are those of IStorage:
/// null for every record, else an object. Failures are logged by the storage and not reported to the caller.
/// Owned through a shared pointer made from the concrete type.
class ICollectionStorage {
 public:
  /// Stores `record` under `status`; does nothing for a status without a folder.
  virtual void save(const Json::Value& record, int status) = 0;

  /// Deletes the records of `status` that the filter selects.
  virtual void remove(const Json::Value& filter, int status) = 0;

  /// A JSON array of the matching records of `status`; JSON null for a status without a folder.
  virtual Json::Value load(const Json::Value& filter, int status) = 0;

  /// Moves the matching records from one status to another.
  virtual void move(const Json::Value& filter, int from, int to) = 0;

 protected:
  ~ICollectionStorage() = default;
};
