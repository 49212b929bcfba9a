#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "veldctl/Message.h"

/// What a look for one file has found: the message, nothing, or a reason why nobody can tell.
struct Lookup {
  std::optional<Message> message;
  std::string error;  ///< "PATH: Permission denied" and the like; empty when the file is there or is not
};

/// The name of a file in a message folder.
struct FileName {
  int status;
  std::string name;
};

/// The names in one or more folders.
struct Listing {
  std::vector<FileName> files;      ///< by name, so of guids the oldest first
  std::vector<std::string> errors;  ///< why a folder could not be listed, one text for each
};

/// Looks at the message folders, which the daemon and other programs may change at any time. It follows no
/// link, opens nothing but plain files, and reads no file of more than `mostBytes`. It writes nothing.
class Folders {
 public:
  static constexpr std::size_t mostBytes = 1
                                           << 20;  ///< twice the longest record with every character escaped

  explicit Folders(std::string root) : root_(std::move(root)) {}

  const std::string& root() const { return root_; }
  std::string path(int status, const std::string& name = "") const;

  Listing names(const std::vector<int>& statuses) const;

  /// When that file was written, in nanoseconds since 1970; 0 when there is none, or it cannot be told.
  std::int64_t changed(int status, const std::string& name) const;

  Lookup read(int status, const std::string& name) const;

  /// The first folder of `statuses` with a file of that name decides.
  Lookup find(const std::string& name, const std::vector<int>& statuses) const;

 private:
  std::string root_;
};
