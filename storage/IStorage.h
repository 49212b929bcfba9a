#pragma once

#include <json/json.h>

/// The records of one folder. Owned through a shared pointer made from the concrete type.
class IStorage {
 public:
  /// Stores `record` under its "guid". False when it could not be stored as far as the storage can tell.
  virtual bool save(const Json::Value& record) = 0;

  /// Deletes every record for a null filter, else the one that has the filter's "guid". False on failure.
  virtual bool remove(const Json::Value& filter) = 0;

  /// A JSON array of the records that match: all for a null filter, else those in which every member of the
  /// filter is present with an equal value.
  virtual Json::Value load(const Json::Value& filter) = 0;

 protected:
  ~IStorage() = default;
};
