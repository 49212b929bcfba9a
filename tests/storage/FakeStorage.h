#pragma once

#include <functional>
#include <map>
#include <vector>

#include "storage/ICollectionStorage.h"
#include "storage/Journal.h"
#include "tests/Json.h"

/// Keeps records in memory, in the order in which they came; a record counts as its filter's when they are
/// equal or their "guid" is the same.
class FakeStorage final : public ICollectionStorage {
 public:
  void save(const Json::Value& record, int status) override {
    if (onSave) onSave();
    if (takes) {
      remove(record, status);
      records[status].push_back(jsonAsItIs(record.toStyledString()));  // as a file gives it back
    }
    if (journal != nullptr) journal->saved(record, status, takes);
  }

  void remove(const Json::Value& filter, int status) override {
    auto& all = records[status];
    if (!removes) return;
    for (auto record = all.begin(); record != all.end();)
      record = matches(*record, filter) ? all.erase(record) : record + 1;
  }

  Json::Value load(const Json::Value& filter, int status) override {
    ++loads[status];
    Json::Value found(Json::arrayValue);
    for (const Json::Value& record : records[status])
      if (matches(record, filter)) found.append(record);
    return found;
  }

  void move(const Json::Value& filter, int from, int to) override {
    const Json::Value found = load(filter, from);
    remove(filter, from);
    for (const Json::Value& record : found) save(record, to);
  }

  /// The "guid" of every record of `status`, in order.
  std::vector<std::string> guids(int status) {
    std::vector<std::string> all;
    for (const Json::Value& record : records[status])
      all.push_back(record.isObject() ? record["guid"].asString() : "");
    return all;
  }

  std::map<int, std::vector<Json::Value>> records;
  std::map<int, int> loads;
  std::function<void()> onSave;
  bool takes = true;  ///< false: the disk is full
  bool removes = true;
  Journal* journal = nullptr;

 private:
  static bool matches(const Json::Value& record, const Json::Value& filter) {
    if (filter.isNull() || record == filter) return true;
    return record.isObject() && filter.isObject() && record["guid"] == filter["guid"];
  }
};
