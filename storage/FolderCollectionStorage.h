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
  /// Creates the four folders and the staging folder that they share; a failure is logged.
  FolderCollectionStorage(const std::string& root, const std::string& tempPath);

  /// Creates those folders that are missing; a failure is logged.
  static void makeMissingFolders(const std::string& root, const std::string& tempPath);

  /// What failed since the object was made.
  [[nodiscard]] const StorageFaults& faults() const { return faults_; }

  void save(const Json::Value& record, int status) override;
  void remove(const Json::Value& filter, int status) override;
  Json::Value load(const Json::Value& filter, int status) override;

  /// Moves nothing: StatusCollectionStorageDecorator carries moves out, by load, remove and save.
  void move(const Json::Value& filter, int from, int to) override;

 private:
  /// The folder of `status`, or nullptr.
  IStorage* folder(int status) const;

  std::map<int, std::shared_ptr<IStorage>> folders;
  StorageFaults faults_;
};
