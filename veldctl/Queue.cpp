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
#include "support/NonCopyable.h"
#include "veldctl/Output.h"

namespace {
namespace Key = MessageRecord::Key;

constexpr char temporaryName[] = "/outbox/veldctl.new";  // only the process with the lock uses this file
constexpr useconds_t guidInterval = 10'000;              // microseconds; guids have hundredths of a second

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

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

// Removes an old file first: before a crash, moveToFree() may have linked the file into a message folder.
void write(const std::string& path, const std::string& text) {
  unlink(path.c_str());
  std::ofstream file(path);
  if (file << text << std::flush) return sync(path);
  const std::system_error error(errno, std::generic_category(), path);
  unlink(path.c_str());
  throw error;
}

// Moves a file. Returns false if `to` exists. Does not use renameat2(), which the C library musl lacks.
bool moveToFree(const std::string& from, const std::string& to) {
  if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0;
  if (errno != EEXIST) fail(to);
  return false;
}

// Returns a guid, which is the local time with hundredths of a second.
std::string guidOfNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  char guid[] = "YYYYmmddHHMMSShh";
  const std::size_t length = std::strftime(guid, sizeof(guid), "%Y%m%d%H%M%S", std::localtime(&now.tv_sec));
  std::snprintf(guid + length, sizeof(guid) - length, "%02d", static_cast<int>(now.tv_nsec / 10'000'000));
  return guid;
}
}  // namespace

// Holds the lock on the outbox while the object exists. Prints a message if it waits longer than one second.
class Queue::Lock : private Orvel::NonCopyable {
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

 private:
  static constexpr useconds_t second = 1'000'000, step = 2'000;
  const int file_;
};

std::string Queue::temporaryPath() const { return folders_.root() + temporaryName; }

std::string Queue::add(Json::Value record) const {
  const Lock lock(folders_.root() + "/outbox");
  const auto isTaken = [&](const std::string& guid) {
    for (const int status : {MessageStatus::Received, MessageStatus::Sent, MessageStatus::Failed})
      if (folders_.changed(status, guid) != 0) return true;
    return false;
  };
  while (true) {
    // This wait makes the guid unique: it is later than all earlier guids. isTaken() does not suffice,
    // because it does not find a message that the daemon is moving between two folders.
    usleep(guidInterval);
    const std::string guid = guidOfNow();
    record[Key::Guid] = guid;
    write(temporaryPath(), Output::line(record) + "\n");
    if (isTaken(guid)) continue;
    if (!moveToFree(temporaryPath(), folders_.path(MessageStatus::Sending, guid))) continue;
    sync(folders_.path(MessageStatus::Sending));
    return guid;
  }
}

// Fails if the daemon has moved or changed the file since it was read, so that no message exists twice.
void Queue::replaceFailed(const Message& failed, const Json::Value& record, std::int64_t changed) const {
  const std::string path = folders_.path(MessageStatus::Failed, failed.name);
  errno = ENOENT;
  if (folders_.changed(MessageStatus::Failed, failed.name) != failed.changed) fail(path);
  replaceFile(path, temporaryPath(), Output::line(record) + "\n", changed);
}

bool Queue::retry(const Message& failed, std::optional<std::uint32_t> retries) const {
  const Lock lock(folders_.root() + "/outbox");
  const std::string to = folders_.path(MessageStatus::Sending, failed.name);
  if (folders_.changed(MessageStatus::Sending, failed.name) != 0) return false;
  Json::Value record = failed.record;
  record.removeMember(seenKey);
  if (retries) record[Key::Retries] = *retries;
  replaceFailed(failed, record, 0);  // 0: the modification time becomes the time of queueing
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

void replaceFile(const std::string& path, const std::string& temporary, const std::string& text,
                 std::int64_t changed) {
  write(temporary, text);
  if (changed != 0) setTime(temporary, changed);
  if (rename(temporary.c_str(), path.c_str()) != 0) fail(path);
}
