#include "storage/Spool.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <memory>

#include "storage/NoteFile.h"
#include "support/Logger.h"

namespace {

using NoteFile::Reading;
using Orvel::FileDescriptor;

constexpr char spoolFolder[] = "/spool";
constexpr char reserveName[] = "reserve";
constexpr std::size_t reserveSize = 128 * 1024;
constexpr char damaged[] = ".damaged";

bool isSetAside(const std::string& name) {
  const std::size_t length = sizeof(damaged) - 1;
  return name.size() >= length && name.compare(name.size() - length, length, damaged) == 0;
}

// Splits "7.sent" into the number 7 and the stage "sent". The number is 0 if `name` is not that of a note.
std::pair<unsigned, std::string> parseName(const std::string& name) {
  unsigned number = 0;
  const char* const end = name.data() + name.size();
  const auto [point, error] = std::from_chars(name.data(), end, number);
  if (error != std::errc() || point == end || *point != '.') return {0, ""};
  return {number, std::string(point + 1, end)};
}

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

}  // namespace

Spool::Spool(const std::string& root) : path_(root + spoolFolder) {}

Spool::Pass Spool::open() {
  std::vector<Note> unwritten;
  for (auto& [number, slot] : slots_)
    if (slot.unwritten) unwritten.push_back({slot.stage, *slot.unwritten});
  slots_.clear();
  last_ = 0;
  if (acquire() && takeIn()) keepReserve();
  for (const Note& note : unwritten) add(note);  // under new numbers: the old ones may be in use on the disk
  std::vector<unsigned> numbers;
  numbers.reserve(slots_.size());
  for (const auto& [number, slot] : slots_) numbers.push_back(number);
  return {*this, std::move(numbers)};
}

std::optional<Spool::Note> Spool::read(unsigned number) {
  const auto found = slots_.find(number);
  if (found == slots_.end()) return std::nullopt;
  const Slot& slot = found->second;
  if (slot.unwritten) return Note{slot.stage, *slot.unwritten};
  Note note{slot.stage, ""};
  switch (NoteFile::read(folder_.get(), nameOf(number), note.text)) {
    case Reading::Whole:
      return note;
    case Reading::Damaged:
      setAside(number);
      return std::nullopt;
    case Reading::Failed:
      if (errno != ENOENT) complain("read");
      return std::nullopt;
  }
  return std::nullopt;
}

unsigned Spool::add(const Note& note) {
  const unsigned number = ++last_;
  slots_[number].stage = note.stage;
  if (!write(number, note)) slots_[number].unwritten = note.text;
  return number;
}

unsigned Spool::replace(unsigned number, const Note& note) {
  const unsigned next = add(note);
  const auto before = slots_.find(number);
  const bool keepsBefore = before != slots_.end() && !before->second.unwritten && slots_[next].unwritten;
  remove(keepsBefore ? next : number);
  return keepsBefore ? number : next;
}

bool Spool::rename(unsigned number, const std::string& stage, bool flushed) {
  const auto found = slots_.find(number);
  if (found == slots_.end()) return false;
  const std::string before = nameOf(number);
  const std::string stageBefore = std::exchange(found->second.stage, stage);
  if (found->second.unwritten) return !flushed;
  const std::string after = nameOf(number);
  if (renameat(folder_.get(), before.c_str(), folder_.get(), after.c_str()) != 0) {
    found->second.stage = stageBefore;
    complain("write");
    return false;
  }
  return !flushed || fsync(folder_.get()) == 0;
}

void Spool::remove(unsigned number) {
  const auto found = slots_.find(number);
  if (found == slots_.end()) return;
  if (!found->second.unwritten && unlinkat(folder_.get(), nameOf(number).c_str(), 0) != 0 && errno != ENOENT)
    complain("write");
  slots_.erase(found);
}

void Spool::setAside(unsigned number) {
  const auto found = slots_.find(number);
  if (found == slots_.end()) return;
  if (!found->second.unwritten) moveAside(nameOf(number));
  slots_.erase(found);
}

Spool::Survey Spool::survey(const std::string& root) {
  Survey survey;
  const FileDescriptor folder(::open((root + spoolFolder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) {
    survey.readable = errno == ENOENT;
    return survey;
  }
  const std::optional<std::vector<std::string>> names = namesIn(folder);
  if (!names) {
    survey.readable = false;
    return survey;
  }
  for (const std::string& name : *names) {
    if (name == reserveName || NoteFile::isUnfinished(name)) continue;
    Note note{parseName(name).second, ""};
    const Reading reading =
        isSetAside(name) ? Reading::Damaged : NoteFile::read(folder.get(), name, note.text);
    if (reading == Reading::Whole) survey.notes.push_back(std::move(note));
    if (reading == Reading::Damaged) ++survey.damaged;
    if (reading == Reading::Failed && errno != ENOENT) survey.readable = false;
  }
  return survey;
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
bool Spool::takeIn() {
  const std::optional<std::vector<std::string>> names = namesIn(folder_);
  if (!names) {
    complain("read");
    folder_.reset();
    return false;
  }
  for (const std::string& name : *names) takeIn(name);
  return true;
}

void Spool::takeIn(const std::string& name) {
  if (name == reserveName) return;
  if (NoteFile::isUnfinished(name)) {
    unlinkat(folder_.get(), name.c_str(), 0);
    return;
  }
  auto [number, stage] = parseName(name);
  last_ = std::max(last_, number);
  if (isSetAside(name)) return;
  if (number != 0 && slots_.count(number) == 0)
    slots_[number].stage = std::move(stage);
  else
    moveAside(name);
}

// Writes the reserve only if twice its size is free. A nearly full disk is thus not written to in each pass.
void Spool::keepReserve() {
  struct statvfs disk;
  if (faccessat(folder_.get(), reserveName, F_OK, 0) == 0 || fstatvfs(folder_.get(), &disk) != 0) return;
  if (static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize < 2 * reserveSize) return;
  NoteFile::writeReserve(folder_.get(), reserveName, reserveSize);
}

bool Spool::write(unsigned number, const Note& note) {
  const std::string name = std::to_string(number) + "." + note.stage;
  bool written = folder_.isOpen() && NoteFile::write(folder_.get(), name, note.text);
  if (!written && folder_.isOpen() && makeRoom()) written = NoteFile::write(folder_.get(), name, note.text);
  if (written)
    complained_ = false;
  else if (folder_.isOpen())
    complain("write");
  return written;
}

// Prepares a second try after a failed write: on a full disk, removes the reserve; makes a removed folder
// again. True if the second try may succeed.
bool Spool::makeRoom() {
  if (errno == ENOENT) return acquire();
  const int error = errno;
  const bool isFull = error == ENOSPC || error == EDQUOT;
  const bool hasRoom = isFull && unlinkat(folder_.get(), reserveName, 0) == 0;
  errno = error;
  return hasRoom;
}

void Spool::moveAside(const std::string& name) {
  const std::string aside = name + damaged;
  ORVEL_LOG(ERROR, "Spool file [%s/%s] is damaged: it is set aside as [%s]", path_.c_str(), name.c_str(),
            aside.c_str());
  if (renameat(folder_.get(), name.c_str(), folder_.get(), aside.c_str()) != 0) complain("write");
}

std::string Spool::nameOf(unsigned number) const {
  return std::to_string(number) + "." + slots_.at(number).stage;
}

void Spool::complain(const char* what) {
  if (!complained_)
    ORVEL_LOG(ERROR, "Cannot %s spool [%s]: [%d][%s]", what, path_.c_str(), errno, std::strerror(errno));
  complained_ = true;
}
