#include "veldctl/Folders.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
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

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

// Brings a file, or the names in a folder, to the disk.
void sync(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 || fsync(file) != 0) fail(path);
  close(file);
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

// Moves a file to a name that is free; false when it is not.
bool moveToFree(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if ((errno == EINVAL || errno == ENOSYS) && link(from.c_str(), to.c_str()) == 0)
    return unlink(from.c_str()) == 0;
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

std::string faultOf(const Message& message) {
  if (!message.record.isObject()) return "it is no JSON object";
  if (MessageRecord::guid(message.record) != message.name) return "its guid is not the name of its file";
  for (const char* const key : {Key::Message, Key::Recipient, Key::Source})
    if (!MessageRecord::member(message.record, key).isConvertibleTo(Json::stringValue))
      return std::string("its ") + key + " is no text";
  return "";
}

}  // namespace

std::string Folders::path(int status, const std::string& name) const {
  return root_ + MessageStatus::folder(status) + (name.empty() ? "" : "/") + name;
}

std::vector<std::pair<std::string, int>> Folders::names(const std::vector<int>& statuses) const {
  std::vector<std::pair<std::string, int>> names;
  for (const int status : statuses) {
    std::error_code error;
    for (const auto& file : std::filesystem::directory_iterator(path(status), error))
      names.emplace_back(file.path().filename(), status);
    if (error) Output::complain(path(status) + ": " + error.message());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::int64_t Folders::changed(int status, const std::string& name) const {
  struct stat info;
  const bool elsewhere = name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos;
  if (elsewhere || lstat(path(status, name).c_str(), &info) != 0) return 0;
  return std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
}

std::optional<Message> Folders::read(int status, const std::string& name) const {
  Message message{status, name, Json::nullValue, "", changed(status, name)};
  if (message.changed == 0) return std::nullopt;
  struct stat info;
  std::ifstream stream;
  if (stat(path(status, name).c_str(), &info) != 0 || !S_ISREG(info.st_mode))
    message.fault = "it is no file";
  else if (stream.open(path(status, name)); !stream.is_open())
    message.fault = std::strerror(errno);
  else if (MessageRecord::parse(stream, message.record, message.fault))
    message.fault = faultOf(message);
  std::replace(message.fault.begin(), message.fault.end(), '\n', ' ');
  return message;
}

int Folders::lock() const {
  const std::string outbox = root_ + "/outbox";
  const int folder = open(outbox.c_str(), O_RDONLY | O_CLOEXEC);
  if (folder < 0 || flock(folder, LOCK_EX) != 0) fail(outbox);
  return folder;
}

std::string Folders::queue(Json::Value record) const {
  const int locked = lock();
  const std::string aside = root_ + asideName;
  std::string guid;
  do {
    // A message that is on its way between two folders is in none, so that this alone would not tell its guid
    // from a free one. But guids are made here by one process at a time, a hundredth of a second apart.
    usleep(10'000);
    guid = guidOfNow();
    record[Key::Guid] = guid;
    write(aside, Output::line(record) + "\n");
  } while (changed(MessageStatus::Received, guid) + changed(MessageStatus::Sent, guid) +
                   changed(MessageStatus::Failed, guid) !=
               0 ||
           !moveToFree(aside, path(MessageStatus::Sending, guid)));
  sync(path(MessageStatus::Sending));
  close(locked);
  return guid;
}

bool Folders::remove(int status, const std::string& name) const {
  if (changed(status, name) == 0) return false;
  if (unlink(path(status, name).c_str()) != 0) fail(path(status, name));
  sync(path(status));
  return true;
}

bool Folders::retry(Message message, std::optional<unsigned> retries) const {
  const int locked = lock();
  const std::string from = path(MessageStatus::Failed, message.name);
  errno = ENOENT;  // the daemon has taken it meanwhile
  if (changed(MessageStatus::Failed, message.name) != message.changed) fail(from);
  if (retries) {
    message.record[Key::Retries] = *retries;
    replaceFile(from, root_ + asideName, Output::line(message.record) + "\n");
  }
  const bool moved = moveToFree(from, path(MessageStatus::Sending, message.name));
  sync(path(MessageStatus::Sending));
  sync(path(MessageStatus::Failed));
  close(locked);
  return moved;
}

void replaceFile(const std::string& path, const std::string& aside, const std::string& text) {
  write(aside, text);
  if (rename(aside.c_str(), path.c_str()) != 0) fail(path);
}
