#pragma once

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "daemon/InTransit.h"
#include "storage/CheckedStorage.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "storage/MessageStore.h"
#include "tests/Json.h"
#include "tests/TemporaryFolder.h"
#include "tests/daemon/FakeProvider.h"

/// The message folders. Records loads and saves, and can be set to refuse removals.
class WatchedFolders final : public ICollectionStorage {
 public:
  explicit WatchedFolders(const std::string& root) : folders_(root, root + "/staging") {}

  void save(const Json::Value& record, int status) override {
    saved.push_back(MessageRecord::guid(record));
    if (onSave) onSave();
    folders_.save(record, status);
  }
  void remove(const Json::Value& filter, int status) override {
    if (removes) folders_.remove(filter, status);
  }
  Json::Value load(const Json::Value& filter, int status) override {
    ++loads[status];
    return folders_.load(filter, status);
  }
  void move(const Json::Value& filter, int from, int to) override { folders_.move(filter, from, to); }

  const StorageFaults& faults() const { return folders_.faults(); }

  std::map<int, int> loads;
  std::vector<std::string> saved;  ///< the guids, in the order of the saves
  std::function<void()> onSave;
  bool removes = true;

 private:
  FolderCollectionStorage folders_;
};

/// The daemon's message store in a temporary folder, and a fake modem.
class World {
 public:
  static constexpr std::uint32_t receivedLimit = 30;
  static constexpr std::uint32_t sentLimit = 20;

  World() { provider.events = &inTransit; }

  /// Writes a message file, named by the "guid" of `record` unless there is a `name`.
  void put(const std::string& record, int status, const std::string& name = "") {
    const std::string file = name.empty() ? json(record)["guid"].asString() : name;
    writeFile(path(status) + "/" + file, json(record).toStyledString());
  }

  /// The content of the message files of `status`, in the order of their names.
  std::vector<Json::Value> records(int status) const {
    std::vector<Json::Value> all;
    for (const std::string& name : names(status))
      all.push_back(jsonAsItIs(readFile(path(status) + "/" + name)));
    return all;
  }

  /// The names of the message files of `status`, sorted.
  std::vector<std::string> names(int status) const {
    std::vector<std::string> all;
    for (const auto& file : std::filesystem::directory_iterator(path(status)))
      all.push_back(file.path().filename());
    std::sort(all.begin(), all.end());
    return all;
  }

  /// While the staging folder is away, no save succeeds.
  void takeStagingAway() { std::filesystem::remove_all(root.path + "/staging"); }
  void bringStagingBack() { std::filesystem::create_directory(root.path + "/staging"); }

  const TemporaryFolder root;
  FakeProvider provider;
  InTransit inTransit{root.path, root.path + "/staging"};
  const std::shared_ptr<WatchedFolders> folders = std::make_shared<WatchedFolders>(root.path);
  const std::shared_ptr<ICollectionStorage> store = makeMessageStore(folders, receivedLimit, sentLimit);
  CheckedStorage storage{*store, folders->faults()};

 private:
  std::string path(int status) const { return root.path + MessageStatus::folder(status); }
};
