#include "storage/FileContent.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/FileDescriptor.h"

namespace {
int readAll(int file, std::string& text, std::size_t longest) {
  char piece[4096];
  for (;;) {
    const ssize_t size = ::read(file, piece, sizeof(piece));
    if (size < 0) return errno;
    if (size == 0) return 0;
    text.append(piece, static_cast<std::size_t>(size));
    if (text.size() > longest) return EFBIG;
  }
}
}  // namespace

FileContent FileContent::read(const std::string& path, std::size_t longest) {
  FileContent content;
  const Orvel::FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!file.isOpen() || fstat(file.get(), &status) != 0) {
    content.openError = errno;
  } else if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    content.openError = ENXIO;
  } else {
    content.readError = readAll(file.get(), content.text, longest);
    if (content.readError != 0) content.text.clear();
  }
  return content;
}
