#include "storage/Spool.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>

#include "storage/NoteFile.h"
#include "support/Logger.h"

namespace {
using NoteFile::numberOf, Orvel::FileDescriptor;

constexpr std::size_t reserveSize = 128 * 1024;

// The names in the folder; nullopt if it cannot be listed completely.
std::optional<std::vector<std::string>> namesIn(const FileDescriptor& folder) {
  FileDescriptor again(openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!again.isOpen()) return std::nullopt;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(fdopendir(again.get()), closedir);
  if (directory == nullptr) return std::nullopt;
  [[maybe_unused]] const int ownedByDirectory = again.release();
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(directory.get());
    if (entry == nullptr) break;
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  if (errno != 0) return std::nullopt;
  return names;
}

// Pseudo-random bytes, which a compressing file system cannot shrink.
std::string incompressible() {
  std::minstd_rand random;
  std::string bytes(reserveSize, '\0');
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 8); });
  return bytes;
}
}  // namespace

Spool::Spool(const std::string& root) : path_(NoteFile::folderBelow(root)) {}

Spool::Pass Spool::open() {
  const auto unwritten = std::exchange(unwritten_, {});
  std::vector<std::string> names;
  last_ = 0;
  if (acquire() && list(names)) keepReserve();
  // These get new numbers: the old ones may be in use on the disk.
  for (const auto& [number, note] : unwritten) names.push_back(add(note));
  return {*this, std::move(names)};
}

std::optional<Spool::Note> Spool::read(const std::string& name) {
  if (const auto found = unwritten_.find(numberOf(name)); found != unwritten_.end()) return found->second;
  const std::optional<std::string> text = NoteFile::read(path_ + "/" + name);
  if (text) return Note{NoteFile::stageOf(name), *text};
  if (errno == EBADMSG)
    setAside(name);
  else if (errno != ENOENT)
    complain("read");
  return std::nullopt;
}

std::string Spool::add(const Note& note) {
  std::string name = std::to_string(++last_) + "." + note.stage;
  if (!write(name, note.text)) unwritten_[last_] = note;
  return name;
}

bool Spool::replace(std::string& name, const Note& note) {
  const std::string next = add(note);
  const bool isOnDisk = !name.empty() && unwritten_.count(numberOf(name)) == 0;
  const bool keepsOld = isOnDisk && unwritten_.count(numberOf(next)) != 0;
  const bool removed = remove(keepsOld ? next : name);
  if (!keepsOld) name = next;
  return removed && !keepsOld;
}

bool Spool::rename(std::string& name, const std::string& stage, bool flushed) {
  if (name.empty()) return false;
  const std::string after = name.substr(0, name.find('.') + 1) + stage;
  if (const auto found = unwritten_.find(numberOf(name)); found != unwritten_.end()) {
    found->second.stage = stage;
    name = after;
    return !flushed;
  }
  if (renameat(folder_.get(), name.c_str(), folder_.get(), after.c_str()) != 0) {
    complain("write");
    return false;
  }
  name = after;
  return !flushed || fsync(folder_.get()) == 0;
}

bool Spool::remove(const std::string& name) {
  if (name.empty() || unwritten_.erase(numberOf(name)) != 0) return true;
  if (unlinkat(folder_.get(), name.c_str(), 0) == 0 || errno == ENOENT) return true;
  complain("write");
  return false;
}

void Spool::setAside(const std::string& name) {
  if (unwritten_.erase(numberOf(name)) != 0) return;
  const std::string aside = name + NoteFile::damaged;
  ORVEL_LOG(ERROR, "Spool file [%s/%s] is damaged: it is set aside as [%s]", path_.c_str(), name.c_str(),
            aside.c_str());
  if (renameat(folder_.get(), name.c_str(), folder_.get(), aside.c_str()) != 0) complain("write");
}

// Opens the folder anew for each pass, since it may have been removed or replaced.
bool Spool::acquire() {
  if (mkdir(path_.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    complain("make");
    return false;
  }
  folder_.reset(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder_.isOpen()) {
    complain("open");
    return false;
  }
  if (flock(folder_.get(), LOCK_EX | LOCK_NB) == 0) return true;
  if (errno != EWOULDBLOCK) complain("lock");
  if (!complained_) ORVEL_LOG(ERROR, "Spool [%s] belongs to another daemon", path_.c_str());
  complained_ = true;
  folder_.reset();
  return false;
}

// Nothing is written without a complete list: a new note could get the number of an unseen one.
bool Spool::list(std::vector<std::string>& names) {
  const std::optional<std::vector<std::string>> files = namesIn(folder_);
  if (!files) {
    complain("read");
    folder_.reset();
    return false;
  }
  for (const std::string& name : *files) {
    last_ = std::max(last_, numberOf(name));
    const NoteFile::Kind kind = NoteFile::kindOf(name);
    if (kind == NoteFile::Kind::Note) names.push_back(name);
    if (kind == NoteFile::Kind::Unfinished) unlinkat(folder_.get(), name.c_str(), 0);
    if (kind == NoteFile::Kind::Foreign) setAside(name);
  }
  const auto isOlder = [](const auto& a, const auto& b) { return numberOf(a) < numberOf(b); };
  std::sort(names.begin(), names.end(), isOlder);
  return true;
}

// Writes the reserve only if twice its size is free. A nearly full disk is thus not written to in each pass.
void Spool::keepReserve() {
  struct statvfs disk;
  if (faccessat(folder_.get(), NoteFile::reserve, F_OK, 0) == 0 || fstatvfs(folder_.get(), &disk) != 0)
    return;
  if (static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize < 2 * reserveSize) return;
  NoteFile::write(folder_.get(), NoteFile::reserve, incompressible());
}

bool Spool::write(const std::string& name, const std::string& text) {
  if (!folder_.isOpen()) return false;
  const auto tryOnce = [&] { return NoteFile::write(folder_.get(), name, NoteFile::framed(text)); };
  const bool written = tryOnce() || (makeRoom() && tryOnce());
  if (written)
    complained_ = false;
  else
    complain("write");
  return written;
}

// Prepares a second try after a failed write: on a full disk, removes the reserve; makes a removed folder
// again. True if the second try may succeed.
bool Spool::makeRoom() {
  if (errno == ENOENT) return acquire();
  const int error = errno;
  const bool isFull = error == ENOSPC || error == EDQUOT;
  const bool hasRoom = isFull && unlinkat(folder_.get(), NoteFile::reserve, 0) == 0;
  errno = error;
  return hasRoom;
}

void Spool::complain(const char* what) {
  if (!complained_)
    ORVEL_LOG(ERROR, "Cannot %s spool [%s]: [%d][%s]", what, path_.c_str(), errno, std::strerror(errno));
  complained_ = true;
}
