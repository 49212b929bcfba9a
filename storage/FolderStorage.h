#pragma once

#include <string>

#include "storage/IStorage.h"
#include "storage/StorageFaults.h"

/// One folder of message records, each in a file of its own that is named by its "guid".
///
/// Any file in the folder is taken for a record; there is no index and no cache. Paths and guids go into file
/// names and shell commands as they are, unquoted. Failures are logged here and never thrown, but for a
/// "guid" that is an array or an object.
class FolderStorage : public IStorage {
 public:
  /// Creates the folder, with its parents. A failure is logged; the object is usable all the same. `faults`,
  /// if any, counts the reads that fail, and outlives the object.
  explicit FolderStorage(const std::string& path, StorageFaults* faults = nullptr);

  /// Writes the record's file anew. False for a record without "guid", and for a file that could not be
  /// written whole, which is logged: one that cannot be opened is not reported.
  bool save(const Json::Value& record) override;

  /// With a null filter, false also when the folder is empty already.
  bool remove(const Json::Value& filter) override;

  /// In the folder's own order. A file that cannot be read as JSON is logged, left out and left in place, as
  /// is a FIFO, a socket or a device, which is not opened; a folder that cannot be opened gives an empty
  /// array.
  Json::Value load(const Json::Value& filter) override;

  const std::string path;  ///< without a trailing "/"

 private:
  void countFailedRead();
  bool read(const char* name, Json::Value& record);

  StorageFaults* const faults_;
};
