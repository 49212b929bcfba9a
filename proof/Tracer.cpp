#include "proof/Tracer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <sstream>

#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace {

constexpr double traceSeconds = 10;
constexpr char traceFile[] = "/run/gateway/trace";
const std::filesystem::path stoppableFolder = "/run/stoppable";

// A value of /proc/PID/status, as in "TracerPid"; empty when there is no such process.
std::string statusOf(pid_t process, const std::string& key) {
  std::istringstream lines(Simulator::readFile("/proc/" + std::to_string(process) + "/status"));
  for (std::string line; std::getline(lines, line);)
    if (line.rfind(key + ":\t", 0) == 0) return line.substr(key.size() + 2);
  return "";
}

// Runs in the child of a process with threads, one of which may hold the allocator's lock: must not
// allocate memory.
[[noreturn]] void run(char* const* command) {
  dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
  execvp(command[0], command);
  _exit(127);
}

}  // namespace

bool Tracer::attach(pid_t process, std::vector<std::string> options) {
  options.insert(options.begin(), {"strace", "-o", traceFile, "-p", std::to_string(process)});
  std::vector<char*> words;
  words.reserve(options.size() + 1);
  for (std::string& option : options) words.push_back(option.data());
  words.push_back(nullptr);
  std::filesystem::remove(traceFile);
  strace_ = fork();
  if (strace_ == 0) run(words.data());
  bool ended = false;
  const bool attached = Simulator::waitUntil(traceSeconds, [&] {
    ended = waitpid(strace_, nullptr, WNOHANG) == strace_;
    return ended || statusOf(process, "TracerPid") == std::to_string(strace_);
  });
  if (ended) strace_ = 0;
  return attached && !ended;
}

void Tracer::detach() {
  if (strace_ == 0) return;
  // Repeats SIGTERM, because strace misses one that arrives just before it waits. waitpid() fails, which also
  // ends the loop, if strace was already reaped.
  while (waitpid(strace_, nullptr, WNOHANG) == 0) {
    kill(strace_, SIGTERM);
    Simulator::sleepAMoment();
  }
  strace_ = 0;
}

std::vector<Tracer::Call> Tracer::calls() {
  std::vector<Call> calls;
  std::map<std::string, unsigned> counts;
  std::istringstream lines(Simulator::readFile(traceFile));
  for (std::string line; std::getline(lines, line);) {
    line.erase(0, line.find_first_not_of("0123456789 "));  // the process id, if several processes are traced
    const std::size_t end = line.find('(');
    if (end == std::string::npos || line.find_first_of(" -+<") < end) continue;  // a signal or an exit
    const std::string name = line.substr(0, end);
    calls.push_back({static_cast<unsigned>(calls.size()) + 1, name, ++counts[name], line});
  }
  return calls;
}

bool Tracer::struck() {
  const std::string trace = Simulator::readFile(traceFile);
  return trace.find("(INJECTED)") != std::string::npos || trace.find("+++ killed") != std::string::npos;
}

std::string Tracer::stoppable(const std::string& daemon, const std::string& preloaded) {
  std::filesystem::create_directories(stoppableFolder);
  const std::string program = stoppableFolder / std::filesystem::path(daemon).filename();
  // umask is the first call of the new process.
  const bool written = Simulator::writeFile(
      program, "#!/bin/sh\npreload=" + preloaded + " daemon=" + daemon + "\n" +
                   "rm \"${0%/*}/stop\" 2>/dev/null || exec env LD_PRELOAD=$preload $daemon\n"
                   "exec strace -D -f -o ${0%/*}/trace -e trace=umask -e inject=umask:signal=STOP -E "
                   "LD_PRELOAD=$preload $daemon\n");
  return written && chmod(program.c_str(), 0700) == 0 ? program : "";
}

bool Tracer::stopNext() {
  std::filesystem::remove(stoppableFolder / "trace");
  return Simulator::writeFile(stoppableFolder / "stop", "");
}

bool Tracer::awaitStop(pid_t process) {
  const auto stopped = [] {
    return Simulator::readFile(stoppableFolder / "trace").find("stopped by SIGSTOP") != std::string::npos;
  };
  if (!Simulator::waitUntil(traceSeconds, stopped)) return false;
  // SIGKILL, because the process inherits blocked signals from the one that starts the daemon.
  kill(static_cast<pid_t>(std::stoi(statusOf(process, "TracerPid"))), SIGKILL);
  return Simulator::waitUntil(traceSeconds, [&] { return statusOf(process, "TracerPid") == "0"; });
}
