#include "storage/Flush.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include "support/FileDescriptor.h"

namespace {
int openToFlush(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

void beginToWrite(const std::string& path) {
  const Orvel::FileDescriptor file(openToFlush(path));
  if (file.isOpen()) sync_file_range(file.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
}

bool flush(const std::string& path) {
  const Orvel::FileDescriptor file(openToFlush(path));
  if (!file.isOpen()) return errno == ENOENT;
  return fsync(file.get()) == 0;
}
}  // namespace

bool flushFiles(const std::vector<std::string>& paths) {
  // The disk begins to write all of them before the first is waited for, so one transaction may carry
  // several.
  std::for_each(paths.begin(), paths.end(), beginToWrite);
  std::set<std::string> folders;
  for (const std::string& path : paths) {
    if (!flush(path)) return false;
    folders.insert(path.substr(0, path.rfind('/')));
  }
  return std::all_of(folders.begin(), folders.end(), flush);
}
