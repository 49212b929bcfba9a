#include "veldctl/Folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tuple>

#include "storage/MessageStatus.h"

namespace {
// Returns false for a path to another folder.
bool isFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

std::string readUpTo(int file, std::size_t most) {
  std::string content;
  char piece[1 << 14];
  while (content.size() < most) {
    const ssize_t size = read(file, piece, sizeof(piece));
    if (size <= 0) break;
    content.append(piece, static_cast<std::size_t>(size));
  }
  return content;
}

// Returns why a file of this type is not opened; empty for a regular file.
std::string kindFault(const struct stat& info) {
  if (S_ISREG(info.st_mode)) return "";
  if (S_ISLNK(info.st_mode)) return "it is a symbolic link";
  return S_ISDIR(info.st_mode) ? "it is a folder" : "it is not a regular file";
}

void readFile(const std::string& path, Message& message) {
  // Another process may have replaced the file since Folders::read() called lstat().
  const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) {
    message.fault = std::strerror(errno);
    return;
  }
  struct stat info;
  if (fstat(file, &info) != 0 || !S_ISREG(info.st_mode))
    message.fault = "it is not a regular file";
  else if (info.st_size > static_cast<off_t>(Folders::mostBytes))
    message.fault = "it has " + std::to_string(info.st_size) + " bytes, far more than a message";
  else
    readRecord(message, readUpTo(file, Folders::mostBytes));
  close(file);
}

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}
}  // namespace

std::string Folders::path(int status, const std::string& name) const {
  return root_ + MessageStatus::folder(status) + (name.empty() ? "" : "/") + name;
}

Listing Folders::names(const std::vector<int>& statuses) const {
  Listing listing;
  for (const int status : statuses) {
    std::error_code error;
    for (const auto& file : std::filesystem::directory_iterator(path(status), error))
      listing.files.push_back({status, file.path().filename()});
    if (error) listing.errors.push_back(path(status) + ": " + error.message());
  }
  std::sort(listing.files.begin(), listing.files.end(), [](const FileName& one, const FileName& other) {
    return std::tie(one.name, one.status) < std::tie(other.name, other.status);
  });
  return listing;
}

std::int64_t Folders::changed(int status, const std::string& name) const {
  struct stat info;
  if (!isFileName(name) || lstat(path(status, name).c_str(), &info) != 0) return 0;
  return nanoseconds(info.st_mtim);
}

Lookup Folders::read(int status, const std::string& name) const {
  if (!isFileName(name)) return {};
  struct stat info;
  const std::string file = path(status, name);
  if (lstat(file.c_str(), &info) != 0) {
    if (errno == ENOENT) return {};
    return {std::nullopt, file + ": " + std::strerror(errno)};
  }
  Message message;
  message.status = status;
  message.name = name;
  message.changed = nanoseconds(info.st_mtim);
  message.fault = kindFault(info);
  if (message.fault.empty()) readFile(file, message);
  return {std::move(message), ""};
}

Lookup Folders::find(const std::string& name, const std::vector<int>& statuses) const {
  Lookup found;
  for (const int status : statuses) {
    Lookup next = read(status, name);
    if (next.message) return next;
    if (found.error.empty()) found.error = next.error;
  }
  return found;
}
