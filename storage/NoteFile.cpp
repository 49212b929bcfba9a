#include "storage/NoteFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>

#include "support/FileDescriptor.h"

namespace NoteFile {
namespace {

using Orvel::FileDescriptor;

constexpr char unfinished[] = ".new";
constexpr char headerBegin[] = "veld 1 ";
constexpr off_t longestNote = 64 * 1024 * 1024;  // a listing of more messages than a modem holds

bool writeWhole(int file, const std::string& content) {
  for (std::size_t written = 0; written < content.size();) {
    const ssize_t size = ::write(file, content.data() + written, content.size() - written);
    if (size < 0) return false;
    written += static_cast<std::size_t>(size);
  }
  return true;
}

// Pseudo-random bytes, which a compressing file system cannot shrink.
std::string incompressible(std::size_t size) {
  std::minstd_rand random;
  std::string bytes(size, '\0');
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 8); });
  return bytes;
}

// A new file that only the daemon may read.
int create(int folder, const std::string& name) {
  return openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                S_IRUSR | S_IWUSR);
}

bool writeNamed(int folder, const std::string& aside, const std::string& name, const std::string& text) {
  const FileDescriptor file(create(folder, aside));
  return file.isOpen() && writeWhole(file.get(), framed(text)) &&
         renameat(folder, aside.c_str(), folder, name.c_str()) == 0 && fsync(file.get()) == 0 &&
         fsync(folder) == 0;
}

}  // namespace

std::string framed(const std::string& text) {
  const uLong sum = crc32_z(0, reinterpret_cast<const Bytef*>(text.data()), text.size());
  char header[64];
  std::snprintf(header, sizeof(header), "%s%zu %08lx\n", headerBegin, text.size(), sum);
  return header + text;
}

std::optional<std::string> unframed(const std::string& content) {
  const std::size_t end = content.find('\n');
  if (end == std::string::npos) return std::nullopt;
  std::string text = content.substr(end + 1);
  if (framed(text) != content) return std::nullopt;
  return text;
}

// Treats a file that is not regular, such as a FIFO or a symbolic link, as damaged. Does not block on it.
Reading read(int folder, const std::string& name, std::string& text) {
  const FileDescriptor file(openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.isOpen()) return errno == ELOOP || errno == ENXIO ? Reading::Damaged : Reading::Failed;
  struct stat status;
  if (fstat(file.get(), &status) != 0) return Reading::Failed;
  if (!S_ISREG(status.st_mode) || status.st_size > longestNote) return Reading::Damaged;
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  for (std::size_t size = 0; size < content.size();) {
    const ssize_t count = ::read(file.get(), content.data() + size, content.size() - size);
    if (count < 0) return Reading::Failed;
    if (count == 0) return Reading::Damaged;
    size += static_cast<std::size_t>(count);
  }
  std::optional<std::string> whole = unframed(content);
  if (!whole) return Reading::Damaged;
  text = std::move(*whole);
  return Reading::Whole;
}

bool write(int folder, const std::string& name, const std::string& text) {
  const std::string aside = name + unfinished;
  unlinkat(folder, aside.c_str(), 0);
  if (writeNamed(folder, aside, name, text)) return true;
  const int error = errno;
  for (const std::string& left : {aside, name}) unlinkat(folder, left.c_str(), 0);
  errno = error;
  return false;
}

bool writeReserve(int folder, const std::string& name, std::size_t size) {
  const FileDescriptor file(create(folder, name));
  if (!file.isOpen()) return false;
  if (writeWhole(file.get(), incompressible(size))) return true;
  unlinkat(folder, name.c_str(), 0);
  return false;
}

bool isUnfinished(const std::string& name) {
  const std::size_t length = sizeof(unfinished) - 1;
  return name.size() >= length && name.compare(name.size() - length, length, unfinished) == 0;
}

}  // namespace NoteFile
