#include "storage/FileContent.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/FileDescriptor.h"

namespace {

constexpr std::size_t longestMessage = 4 * 1024 * 1024;  // more than 255 parts, all characters escaped

int readAll(int file, std::string& text) {
  char piece[4096];
  for (;;) {
    const ssize_t size = ::read(file, piece, sizeof(piece));
    if (size < 0) return errno;
    if (size == 0) return 0;
    text.append(piece, static_cast<std::size_t>(size));
    if (text.size() > longestMessage) return EFBIG;
  }
}

}  // namespace

FileContent FileContent::read(const std::string& path) {
  FileContent content;
  const Orvel::FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!file.isOpen() || fstat(file.get(), &status) != 0) {
    content.openError = errno;
  } else if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    content.openError = ENXIO;
  } else {
    content.readError = readAll(file.get(), content.text);
    if (content.readError != 0) content.text.clear();
  }
  return content;
}
