#include "veldctl/Queue.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Output.h"

namespace {

namespace Key = MessageRecord::Key;

constexpr char asideName[] = "/outbox/veldctl.new";  // belongs to who holds the lock
constexpr useconds_t guidInterval = 10'000;          // microseconds; a guid counts hundredths of a second

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

// Brings a file, or the names in a folder, to the disk.
void sync(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 || fsync(file) != 0) fail(path);
  close(file);
}

void setTime(const std::string& path, std::int64_t changed) {
  timespec time{};
  time.tv_sec = static_cast<std::time_t>(changed / 1'000'000'000);
  time.tv_nsec = static_cast<decltype(time.tv_nsec)>(changed % 1'000'000'000);
  const timespec both[] = {time, time};
  if (utimensat(AT_FDCWD, path.c_str(), both, 0) != 0) fail(path);
}

// The old file is not written into: it may have been linked into a folder.
void write(const std::string& path, const std::string& text) {
  unlink(path.c_str());
  std::ofstream file(path);
  if (file << text << std::flush) return sync(path);
  const std::system_error error(errno, std::generic_category(), path);
  unlink(path.c_str());
  throw error;
}

// Moves a file to a name that is free; false when it is not. The C library musl has no rename that refuses to
// replace.
bool moveToFree(const std::string& from, const std::string& to) {
  if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0;
  if (errno != EEXIST) fail(to);
  return false;
}

// Local time to the hundredth of a second, which has the form of the daemon's guids.
std::string guidOfNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  char guid[] = "YYYYmmddHHMMSShh";
  const std::size_t length = std::strftime(guid, sizeof(guid), "%Y%m%d%H%M%S", std::localtime(&now.tv_sec));
  std::snprintf(guid + length, sizeof(guid) - length, "%02d", static_cast<int>(now.tv_nsec / 10'000'000));
  return guid;
}

}  // namespace

// The lock on the outbox, held until the object ends. After one second of waiting, the user is told.
class Queue::Lock {
 public:
  explicit Lock(const std::string& folder) : file_(open(folder.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file_ < 0) fail(folder);
    for (useconds_t waited = 0; waited < second; waited += step) {
      if (flock(file_, LOCK_EX | LOCK_NB) == 0) return;
      if (errno != EWOULDBLOCK) fail(folder);
      usleep(step);
    }
    Output::complain("another program holds the lock on " + folder + ": waiting");
    if (flock(file_, LOCK_EX) != 0) fail(folder);
  }
  ~Lock() { close(file_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  static constexpr useconds_t second = 1'000'000, step = 2'000;
  const int file_;
};

std::string Queue::aside() const { return folders_.root() + asideName; }

std::string Queue::add(Json::Value record) const {
  const Lock lock(folders_.root() + "/outbox");
  const auto isTaken = [&](const std::string& guid) {
    for (const int status : {MessageStatus::Received, MessageStatus::Sent, MessageStatus::Failed})
      if (folders_.changed(status, guid) != 0) return true;
    return false;
  };
  std::string guid;
  do {
    // A message that is on its way between two folders is in none of them, so its guid looks free. Whoever
    // holds the lock takes a later guid than the one before, so no guid is given twice.
    usleep(guidInterval);
    guid = guidOfNow();
    record[Key::Guid] = guid;
    write(aside(), Output::line(record) + "\n");
  } while (isTaken(guid) || !moveToFree(aside(), folders_.path(MessageStatus::Sending, guid)));
  sync(folders_.path(MessageStatus::Sending));
  return guid;
}

// The daemon may have taken the message meanwhile: then it does not come back.
void Queue::replaceFailed(const Message& failed, const Json::Value& record, std::int64_t changed) const {
  const std::string path = folders_.path(MessageStatus::Failed, failed.name);
  errno = ENOENT;
  if (folders_.changed(MessageStatus::Failed, failed.name) != failed.changed) fail(path);
  replaceFile(path, aside(), Output::line(record) + "\n", changed);
}

bool Queue::retry(const Message& failed, std::optional<std::uint32_t> retries) const {
  const Lock lock(folders_.root() + "/outbox");
  const std::string to = folders_.path(MessageStatus::Sending, failed.name);
  if (folders_.changed(MessageStatus::Sending, failed.name) != 0) return false;
  Json::Value record = failed.record;
  record.removeMember(seenKey);
  if (retries) record[Key::Retries] = *retries;
  replaceFailed(failed, record, 0);  // it waits from now on
  const bool moved = moveToFree(folders_.path(MessageStatus::Failed, failed.name), to);
  sync(folders_.path(MessageStatus::Sending));
  sync(folders_.path(MessageStatus::Failed));
  return moved;
}

void Queue::markSeen(const Message& failed) const {
  const Lock lock(folders_.root() + "/outbox");
  Json::Value record = failed.record;
  record[seenKey] = true;
  replaceFailed(failed, record, failed.changed);
}

bool Queue::remove(int status, const std::string& name) const {
  if (folders_.changed(status, name) == 0) return false;
  const std::string path = folders_.path(status, name);
  std::error_code error;
  std::filesystem::remove_all(path, error);
  if (error) throw std::system_error(error, path);
  sync(folders_.path(status));
  return true;
}

void replaceFile(const std::string& path, const std::string& aside, const std::string& text,
                 std::int64_t changed) {
  write(aside, text);
  if (changed != 0) setTime(aside, changed);
  if (rename(aside.c_str(), path.c_str()) != 0) fail(path);
}
