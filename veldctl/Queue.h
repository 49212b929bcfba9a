#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "veldctl/Folders.h"

/// Changes the message folders. A lock lets only one process at a time add to the queue. Each call returns
/// after its change is on the disk. Throws std::system_error if a system call fails.
class Queue {
 public:
  explicit Queue(const Folders& folders) : folders_(folders) {}

  /// Queues a record under a new guid and returns the guid.
  std::string add(Json::Value record) const;

  /// Queues a failed message again, with new `retries` if given. Returns false if it is queued already.
  bool retry(const Message& failed, std::optional<std::uint32_t> retries) const;

  /// Marks a failed message as seen. Keeps the modification time of the file.
  void markSeen(const Message& failed) const;

  /// Removes a file, or a folder with its content. Returns false if it does not exist.
  bool remove(int status, const std::string& name) const;

 private:
  class Lock;

  void replaceFailed(const Message& failed, const Json::Value& record, std::int64_t changed) const;
  std::string temporaryPath() const;

  const Folders& folders_;
};

/// Writes and syncs `temporary`, and renames it to `path`. Sets its modification time if `changed` is not 0.
void replaceFile(const std::string& path, const std::string& temporary, const std::string& text,
                 std::int64_t changed = 0);
