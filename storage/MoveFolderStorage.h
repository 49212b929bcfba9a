#pragma once

#include <string>

#include "storage/FolderStorage.h"

/// A folder of message records that never holds a half-written file: a record is written in a staging folder
/// first, and the finished file is moved.
class MoveFolderStorage final : public FolderStorage {
 public:
  /// Creates both folders, `path` first. For `faults`, see FolderStorage.
  MoveFolderStorage(const std::string& path, const std::string& tempPath, StorageFaults* faults = nullptr);

  /// False for a record without "guid", if it cannot be staged completely, and if the move fails. A staged
  /// file that could not be moved stays until the next save of the same guid replaces it. A torn file in
  /// `path` is removed.
  bool save(const Json::Value& record) override;

 private:
  FolderStorage tempFolder;
};
