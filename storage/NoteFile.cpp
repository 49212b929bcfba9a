#include "storage/NoteFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstdio>

#include "storage/FileContent.h"
#include "support/FileDescriptor.h"

namespace NoteFile {
namespace {

constexpr char headerBegin[] = "veld 1 ";
constexpr std::size_t longestNote = 64 * 1024 * 1024;  // a listing of more messages than a modem holds

bool writeWhole(int file, const std::string& content) {
  for (std::size_t written = 0; written < content.size();) {
    const ssize_t size = ::write(file, content.data() + written, content.size() - written);
    if (size < 0) return false;
    written += static_cast<std::size_t>(size);
  }
  return true;
}

bool writeNamed(int folder, const std::string& aside, const std::string& name, const std::string& content) {
  const Orvel::FileDescriptor file(
      openat(folder, aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.isOpen() || !writeWhole(file.get(), content)) return false;
  if (renameat(folder, aside.c_str(), folder, name.c_str()) != 0) return false;
  return fsync(file.get()) == 0 && fsync(folder) == 0;
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

Reading read(const std::string& path, std::string& text) {
  const FileContent content = FileContent::read(path, longestNote);
  errno = content.openError != 0 ? content.openError : content.readError;
  if (errno == ENXIO || errno == ELOOP || errno == EISDIR || errno == EFBIG) return Reading::Damaged;
  if (errno != 0) return Reading::Failed;
  std::optional<std::string> whole = unframed(content.text);
  if (!whole) return Reading::Damaged;
  text = std::move(*whole);
  return Reading::Whole;
}

bool write(int folder, const std::string& aside, const std::string& name, const std::string& content) {
  unlinkat(folder, aside.c_str(), 0);
  if (writeNamed(folder, aside, name, content)) return true;
  const int error = errno;
  for (const std::string& left : {aside, name}) unlinkat(folder, left.c_str(), 0);
  errno = error;
  return false;
}

}  // namespace NoteFile
