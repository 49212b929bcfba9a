#pragma once

#include <json/json.h>

/// The records of one folder. Owned through a shared pointer made from the concrete type.
class IStorage {
 public:
  /// Stores `record` under its "guid". False if the storage detects a failure.
  virtual bool save(const Json::Value& record) = 0;

  /// Deletes every record for a null filter, else the record with the filter's "guid". False on failure.
  virtual bool remove(const Json::Value& filter) = 0;

  /// A JSON array of the records that match: all for a null filter, else those that contain every member of
  /// the filter with an equal value.
  virtual Json::Value load(const Json::Value& filter) = 0;

 protected:
  ~IStorage() = default;
};
