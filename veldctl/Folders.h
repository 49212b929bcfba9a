#pragma once

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// One file of a message folder.
struct Message {
  int status = 0;            ///< its folder, see MessageStatus
  std::string name;          ///< of the file: the guid, when all is well
  Json::Value record;        ///< null when it is none
  std::string fault;         ///< why veld cannot handle it; empty when it can
  std::int64_t changed = 0;  ///< when the file was written, nanoseconds since 1970
};

/// The message folders, which the daemon may change at any time. What cannot be listed is complained about;
/// what cannot be done throws std::system_error.
class Folders {
 public:
  explicit Folders(std::string root) : root_(std::move(root)) {}

  const std::string& root() const { return root_; }
  std::string path(int status, const std::string& name = "") const;

  /// The names of the files in some folders, with the folder; by name, so of guids the oldest first.
  std::vector<std::pair<std::string, int>> names(const std::vector<int>& statuses) const;

  /// When that file was written; 0 when there is none.
  std::int64_t changed(int status, const std::string& name) const;

  /// That file; none when there is none.
  std::optional<Message> read(int status, const std::string& name) const;

  /// Queues a record under a guid of its own, and returns that: the file is whole, and on the disk. Waits for
  /// other processes that do so, ten milliseconds each.
  std::string queue(Json::Value record) const;

  /// Removes that file; whether there was one.
  bool remove(int status, const std::string& name) const;

  /// Queues a failed message again, with another "retries" if there is one. False when it is queued already.
  bool retry(Message message, std::optional<unsigned> retries) const;

 private:
  int lock() const;
  std::string root_;
};

/// Puts a file to `path` in one step, by way of `aside`; it is on the disk.
void replaceFile(const std::string& path, const std::string& aside, const std::string& text);
