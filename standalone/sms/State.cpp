#include "standalone/sms/State.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <thread>

#include "standalone/sms/Modem.h"

namespace Standalone {
namespace {
// While the object exists, a process of root has the rights of the folder's owner only. Links that the owner
// has put into the folder then cannot make root write elsewhere.
class AsOwner {
 public:
  explicit AsOwner(const std::string& folder) : isRoot_(geteuid() == 0) {
    struct stat status{};
    if (!isRoot_ || stat(folder.c_str(), &status) != 0) return;
    isRefused_ = setegid(status.st_gid) != 0 || seteuid(status.st_uid) != 0;
  }
  ~AsOwner() {
    if (isRoot_) isRefused_ = seteuid(0) != 0 || setegid(0) != 0;
  }
  AsOwner(const AsOwner&) = delete;
  AsOwner& operator=(const AsOwner&) = delete;
  bool isRefused() const { return isRefused_; }

 private:
  const bool isRoot_;
  bool isRefused_ = false;
};

[[noreturn]] void fail(const std::string& action) { throw Problem(action + ": " + std::strerror(errno)); }
}  // namespace

std::int64_t upTime() {
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return now.tv_sec;
}

State::State(std::string folder, const Deadline& deadline) : folder_(std::move(folder)) {
  if (mkdir(folder_.c_str(), 0700) != 0 && errno != EEXIST) fail("cannot create " + folder_);
  const AsOwner owner(folder_);
  lock_ = owner.isRefused() ? -1 : open((folder_ + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock_ < 0) fail("cannot open the lock in " + folder_);
  while (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
    if (deadline.hasPassed()) throw Problem("another call of sms is still running");
    std::this_thread::sleep_for(deadline.left(std::chrono::milliseconds(20)));
  }
  read();
}

State::~State() { close(lock_); }

// Each line is a key, a blank and a value. Ignores unknown keys, because a later version may write more.
void State::read() {
  std::ifstream in(file());
  if (!in && errno != ENOENT) fail("cannot read " + file());
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string key;
    std::string id;
    words >> key >> std::ws;
    if (key == "binding") {
      std::getline(words, binding_);
    } else if (key == "problem") {
      std::getline(words, problem);
    } else if (key == "tried-pin") {
      words >> triedPin;
    } else if (key == "looked") {
      words >> lastFetch >> hasArrivals;
    } else if (key == "mark") {
      char mark = 0;
      words >> mark >> id;
      if (mark == 'r' || mark == 'p' || mark == 'd') marks[id] = static_cast<Mark>(mark);
    }
  }
}

void State::bind(const std::string& binding) {
  if (binding_ == binding) return;
  binding_ = binding;
  marks.clear();
  lastFetch = 0;
  hasArrivals = false;
}

void State::save() const {
  const std::string fresh = file() + ".new";
  const AsOwner owner(folder_);
  if (owner.isRefused()) fail("cannot write " + fresh);
  const mode_t before = umask(077);
  std::ofstream out(fresh, std::ios::trunc);
  umask(before);
  out << "binding " << binding_ << "\n";
  if (!problem.empty()) out << "problem " << problem << "\n";
  if (!triedPin.empty()) out << "tried-pin " << triedPin << "\n";
  out << "looked " << lastFetch << " " << hasArrivals << "\n";
  for (const auto& [id, mark] : marks) out << "mark " << static_cast<char>(mark) << " " << id << "\n";
  out.close();
  if (!out || std::rename(fresh.c_str(), file().c_str()) != 0) fail("cannot write " + fresh);
}
}  // namespace Standalone
