#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "veldctl/Message.h"

/// The result of reading one file: a message, an error, or neither if the file does not exist.
struct Lookup {
  std::optional<Message> message;
  std::string error;  ///< such as "PATH: Permission denied"
};

struct FileName {
  int status;  ///< the folder, see MessageStatus
  std::string name;
};

struct Listing {
  std::vector<FileName> files;      ///< sorted by name, so that the oldest guid is first
  std::vector<std::string> errors;  ///< one text for each folder that cannot be listed
};

/// Reads the message folders, which other processes may change at any time. Opens only regular files of at
/// most `mostBytes`, and follows no symbolic link.
class Folders {
 public:
  /// Twice the size of the longest record in which every character is escaped.
  static constexpr std::size_t mostBytes = 1 << 20;

  explicit Folders(std::string root) : root_(std::move(root)) {}

  const std::string& root() const { return root_; }
  std::string path(int status, const std::string& name = "") const;

  Listing names(const std::vector<int>& statuses) const;

  /// Returns the modification time of a file in nanoseconds since 1970; 0 if there is no such file.
  std::int64_t changed(int status, const std::string& name) const;

  Lookup read(int status, const std::string& name) const;

  /// Searches the folders of `statuses` in their order, and reads the first file with this name.
  Lookup find(const std::string& name, const std::vector<int>& statuses) const;

 private:
  std::string root_;
};
