#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "veldctl/Folders.h"

/// Changes the message folders. One process at a time adds to the queue: the others wait for its lock. Each
/// call returns when its change is on the disk. std::system_error says what cannot be done.
class Queue {
 public:
  explicit Queue(const Folders& folders) : folders_(folders) {}

  /// Queues a record under a guid of its own, and returns that.
  std::string add(Json::Value record) const;

  /// Queues a failed message again, with other `retries` if given. False when a message of that guid is
  /// queued already.
  bool retry(const Message& failed, std::optional<std::uint32_t> retries) const;

  /// Marks a failed message as seen. The file keeps its time.
  void markSeen(const Message& failed) const;

  /// Removes that file, or that folder with all that is in it. False when there is none.
  bool remove(int status, const std::string& name) const;

 private:
  class Lock;

  void replaceFailed(const Message& failed, const Json::Value& record, std::int64_t changed) const;
  std::string aside() const;

  const Folders& folders_;
};

/// Puts a file to `path` in one step, by way of `aside`. It is on the disk when the call returns. A `changed`
/// other than 0 becomes the time of the file.
void replaceFile(const std::string& path, const std::string& aside, const std::string& text,
                 std::int64_t changed = 0);
