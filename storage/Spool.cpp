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
#include <random>

#include "storage/NoteFile.h"
#include "support/Logger.h"

namespace {

using NoteFile::Reading;
using Orvel::FileDescriptor;

constexpr char spoolFolder[] = "/spool";
constexpr char reserveName[] = "reserve";
constexpr std::size_t reserveSize = 128 * 1024;
constexpr char unfinished[] = ".new";
constexpr char damaged[] = ".damaged";

// The parts of a file name, as in "7.sent-2.new".
struct Name {
  unsigned number = 0;  // 0: not the name of a note
  std::string stage;
  std::string ending;  // ".new", ".damaged" or empty
};

Name parseName(std::string text) {
  Name name;
  const std::size_t ending = std::min(text.rfind('.'), text.size());
  for (const char* const known : {unfinished, damaged})
    if (text.compare(ending, std::string::npos, known) == 0) name.ending = known;
  text.resize(text.size() - name.ending.size());
  const char* const end = text.data() + text.size();
  const auto [point, error] = std::from_chars(text.data(), end, name.number);
  if (error == std::errc() && point != end && *point == '.')
    name.stage.assign(point + 1, end);
  else
    name.number = 0;
  return name;
}

// The names in the folder; nullopt if it cannot be listed completely.
std::optional<std::vector<std::string>> namesIn(const FileDescriptor& folder) {
  if (!folder.isOpen()) return std::nullopt;
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
  const Reading reading = NoteFile::read(path_ + "/" + nameOf(number), note.text);
  if (reading == Reading::Whole) return note;
  if (reading == Reading::Damaged)
    setAside(number);
  else if (errno != ENOENT)
    complain("read");
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
  const std::string path = root + spoolFolder;
  const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::optional<std::vector<std::string>> names = namesIn(folder);
  if (!names) {
    survey.readable = errno == ENOENT;
    return survey;
  }
  for (const std::string& file : *names) {
    const Name name = parseName(file);
    if (file == reserveName || name.ending == unfinished) continue;
    Note note{name.stage, ""};
    const Reading reading =
        name.ending == damaged ? Reading::Damaged : NoteFile::read(path + "/" + file, note.text);
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

void Spool::takeIn(const std::string& file) {
  Name name = parseName(file);
  if (file == reserveName) return;
  if (name.ending == unfinished) {
    unlinkat(folder_.get(), file.c_str(), 0);
    return;
  }
  last_ = std::max(last_, name.number);
  if (name.ending == damaged) return;
  if (name.number != 0 && name.ending.empty() && slots_.count(name.number) == 0)
    slots_[name.number].stage = std::move(name.stage);
  else
    moveAside(file);
}

// Writes the reserve only if twice its size is free. A nearly full disk is thus not written to in each pass.
void Spool::keepReserve() {
  struct statvfs disk;
  if (faccessat(folder_.get(), reserveName, F_OK, 0) == 0 || fstatvfs(folder_.get(), &disk) != 0) return;
  if (static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize < 2 * reserveSize) return;
  NoteFile::write(folder_.get(), std::string(reserveName) + unfinished, reserveName, incompressible());
}

bool Spool::write(unsigned number, const Note& note) {
  if (!folder_.isOpen()) return false;
  const std::string name = std::to_string(number) + "." + note.stage;
  const auto tryOnce = [&] {
    return NoteFile::write(folder_.get(), name + unfinished, name, NoteFile::framed(note.text));
  };
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
