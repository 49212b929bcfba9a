#pragma once

#include <string>

#include "storage/IStorage.h"
#include "storage/StorageFaults.h"

/// One folder of message records. Each record is one file, named by its "guid".
///
/// Every file in the folder counts as a record; there is no index and no cache. Paths and guids go into file
/// names and shell commands unquoted. Failures are logged, not thrown, except for a "guid" that is an array
/// or an object.
class FolderStorage : public IStorage {
 public:
  /// Creates the folder and its parents. A failure is logged and leaves the object usable. `faults`, if
  /// given, counts failed reads and must outlive the object.
  explicit FolderStorage(const std::string& path, StorageFaults* faults = nullptr);

  /// Creates or overwrites the record's file. False for a record without "guid", and if a write fails, which
  /// is logged. A file that cannot be opened is not reported.
  bool save(const Json::Value& record) override;

  /// With a null filter, false also if the folder is empty.
  bool remove(const Json::Value& filter) override;

  /// Returns the records in directory order. Logs and skips a file that is not JSON, and a FIFO, a socket or
  /// a device, which it does not read. Returns an empty array if the folder cannot be opened.
  Json::Value load(const Json::Value& filter) override;

  const std::string path;  ///< without a trailing "/"

 private:
  void countFailedRead();
  bool read(const char* name, Json::Value& record);

  StorageFaults* const faults_;
};
