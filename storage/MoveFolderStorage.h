#pragma once

#include <string>

#include "storage/FolderStorage.h"

/// A folder of message records that never holds a half-written file: a record is written in a staging folder
/// first, and the finished file is moved.
class MoveFolderStorage final : public FolderStorage {
 public:
  /// Creates both folders, `path` first. For `faults`, see FolderStorage.
  MoveFolderStorage(const std::string& path, const std::string& tempPath, StorageFaults* faults = nullptr);

  /// False for a record without "guid", when it cannot be staged whole, and when the move fails. A staged
  /// file that could not be moved is left behind, and the next save of the same guid overwrites it; a file
  /// that the move tore is removed.
  bool save(const Json::Value& record) override;

 private:
  FolderStorage tempFolder;
};
