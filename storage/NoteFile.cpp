#include "storage/NoteFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>

#include "storage/FileContent.h"
#include "support/FileDescriptor.h"

namespace NoteFile {
namespace {
constexpr char unfinished[] = ".new";
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

std::string folderBelow(const std::string& root) { return root + "/spool"; }

Kind kindOf(const std::string& name) {
  const std::string ending = name.substr(std::min(name.rfind('.'), name.size()));
  if (name == reserve) return Kind::Reserve;
  if (ending == damaged) return Kind::SetAside;
  if (ending == unfinished) return Kind::Unfinished;
  return numberOf(name) != 0 ? Kind::Note : Kind::Foreign;
}

unsigned numberOf(const std::string& name) {
  unsigned number = 0;
  const char* const end = name.data() + name.size();
  const auto [point, error] = std::from_chars(name.data(), end, number);
  return error == std::errc() && point != end && *point == '.' ? number : 0;
}

std::string stageOf(const std::string& name) { return name.substr(name.find('.') + 1); }

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

std::optional<std::string> read(const std::string& path) {
  const FileContent content = FileContent::read(path, longestNote);
  const int error = content.openError != 0 ? content.openError : content.readError;
  std::optional<std::string> text;
  if (error == 0) text = unframed(content.text);
  const bool isDamaged = error == 0 || error == ENXIO || error == ELOOP || error == EISDIR || error == EFBIG;
  errno = isDamaged ? EBADMSG : error;
  return text;
}

bool write(int folder, const std::string& name, const std::string& content) {
  const std::string aside = name + unfinished;
  unlinkat(folder, aside.c_str(), 0);
  if (writeNamed(folder, aside, name, content)) return true;
  const int error = errno;
  for (const std::string& left : {aside, name}) unlinkat(folder, left.c_str(), 0);
  errno = error;
  return false;
}
}  // namespace NoteFile
