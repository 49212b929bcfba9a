#include "standalone/api/CommandProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern "C" {  // the header of glibc 2.36 has no extern "C" of its own
#include <sys/pidfd.h>
}

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "support/Logger.h"

namespace Standalone {
namespace {
constexpr std::size_t mostOutput = 64 << 10;

/// Owns a file descriptor, or none (-1). The destructor closes the descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { reset(-1); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  void reset(int number) {
    if (number_ >= 0) close(number_);
    number_ = number;
  }
  int number() const { return number_; }

 private:
  int number_;
};

bool openPipe(Descriptor& readEnd, Descriptor& writeEnd) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  readEnd.reset(ends[0]);
  writeEnd.reset(ends[1]);
  return true;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// Starts the program in a new process group. Returns its process id; 0 on failure.
pid_t start(const std::vector<std::string>& words, const std::vector<std::string>& environment, int input,
            int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addchdir_np(&actions, "/");
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t defaults;
  sigfillset(&defaults);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
  pid_t process = 0;
  const int error = posix_spawnp(&process, words[0].c_str(), &actions, &attributes, pointersTo(words).data(),
                                 pointersTo(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (error == 0) return process;
  ORVEL_LOG(ERROR, "%s cannot be started: %s", words[0].c_str(), std::strerror(error));
  return 0;
}

time_t secondsNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec;
}

// Reads once, and appends to `output` until it has 64 KiB. Returns false at the end of the stream.
bool collect(int stream, std::string& output) {
  char piece[4096];
  const ssize_t count = read(stream, piece, sizeof piece);
  if (count <= 0) return false;
  output.append(piece, std::min(mostOutput - output.size(), static_cast<std::size_t>(count)));
  return true;
}

// Collects output until the program has ended and the pipe is empty. Returns false after `seconds`.
bool waitForEnd(int process, int stream, int seconds, std::string& output) {
  const time_t end = secondsNow() + seconds;
  pollfd watched[2] = {{stream, POLLIN, 0}, {process, POLLIN, 0}};
  for (time_t left = seconds; left > 0; left = end - secondsNow()) {
    poll(watched, 2, static_cast<int>(left) * 1000);
    if (watched[0].revents != 0) {
      if (!collect(stream, output)) watched[0].fd = -1;
    } else if (watched[1].revents != 0) {
      return true;
    }
  }
  return false;
}
}  // namespace

Ending runCommand(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                  const std::string& input, int seconds) {
  Ending ending;
  Descriptor inputRead, inputWrite, outputRead, outputWrite;
  if (!openPipe(inputRead, inputWrite) || !openPipe(outputRead, outputWrite)) return ending;
  // write() neither blocks nor fails: the pipe has room for the whole input, and its read end is open.
  const ssize_t written = write(inputWrite.number(), input.data(), input.size());
  if (written != static_cast<ssize_t>(input.size())) return ending;
  inputWrite.reset(-1);
  const pid_t process = start(words, environment, inputRead.number(), outputWrite.number());
  if (process == 0) return ending;
  outputWrite.reset(-1);
  const Descriptor watched(pidfd_open(process, 0));
  ending.timedOut = !waitForEnd(watched.number(), outputRead.number(), seconds, ending.output);
  kill(-process, SIGKILL);
  int status = 0;
  waitpid(process, &status, 0);
  ending.succeeded = !ending.timedOut && status == 0;
  return ending;
}
}  // namespace Standalone
