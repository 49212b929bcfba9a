#pragma once

#include <map>
#include <memory>
#include <string>

#include "storage/ICollectionStorage.h"
#include "storage/IStorage.h"
#include "storage/StorageFaults.h"

/// The folder tree of the message store: one folder per status below a root.
///
///     root/inbox/received   root/outbox/sending   root/outbox/sent   root/outbox/failed
class FolderCollectionStorage final : public ICollectionStorage {
 public:
  /// Creates the four folders and their common staging folder if they are missing; logs a failure.
  FolderCollectionStorage(const std::string& root, const std::string& tempPath);

  /// Counts the failures since construction.
  [[nodiscard]] const StorageFaults& faults() const { return faults_; }

  void save(const Json::Value& record, int status) override;
  void remove(const Json::Value& filter, int status) override;
  Json::Value load(const Json::Value& filter, int status) override;

  /// Moves nothing: StatusCollectionStorageDecorator implements moves by load, remove and save.
  void move(const Json::Value& filter, int from, int to) override;

 private:
  /// The folder of `status`, or nullptr.
  IStorage* folder(int status) const;

  std::map<int, std::shared_ptr<IStorage>> folders;
  StorageFaults faults_;
};
