#include "storage/Flush.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <list>
#include <set>

#include "support/FileDescriptor.h"

namespace {

using Orvel::FileDescriptor;

constexpr std::size_t openAtOnce = 64;  // files that one step opens

// Starts the write-back of all files before it waits for the first, so that the disk can merge the writes.
bool flushSome(std::vector<std::string>::const_iterator path, std::vector<std::string>::const_iterator end) {
  std::list<FileDescriptor> files;
  for (; path != end; ++path) {
    const int file = open(path->c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0 && errno == ENOENT) continue;
    if (file < 0) return false;
    files.emplace_back(file);
    sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE);
  }
  for (const FileDescriptor& file : files)
    if (fsync(file.get()) != 0) return false;
  return true;
}

bool flushFolder(const std::string& path) {
  const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) return errno == ENOENT;
  return fsync(folder.get()) == 0;
}

}  // namespace

bool flushFiles(const std::vector<std::string>& paths) {
  for (auto begin = paths.begin(); begin != paths.end();) {
    const auto left = static_cast<std::size_t>(paths.end() - begin);
    const auto end = begin + static_cast<std::ptrdiff_t>(left < openAtOnce ? left : openAtOnce);
    if (!flushSome(begin, end)) return false;
    begin = end;
  }
  std::set<std::string> folders;
  for (const std::string& path : paths) folders.insert(path.substr(0, path.rfind('/')));
  for (const std::string& folder : folders)
    if (!flushFolder(folder)) return false;
  return true;
}
