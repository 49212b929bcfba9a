#include "proof/Tracer.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>

#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace {

constexpr double traceSeconds = 10;
constexpr char traceFile[] = "/run/gateway/trace";
const std::filesystem::path stoppableFolder = "/run/stoppable";

// The process that traces another; 0 when there is none.
pid_t tracerOf(pid_t process) {
  const std::string key = "TracerPid:\t";
  const std::string status = Simulator::readFile("/proc/" + std::to_string(process) + "/status");
  const std::size_t found = status.find(key);
  return found == std::string::npos ? 0 : std::stoi(status.substr(found + key.size()));
}

}  // namespace

bool Tracer::attach(pid_t process, const std::string& options) {
  const std::string command = "strace -p " + std::to_string(process) + " -o " + traceFile + " " + options;
  std::filesystem::remove(traceFile);
  // The shell ends at once, and strace becomes a child of this process.
  if (std::system((command + " 2>/dev/null &").c_str()) != 0) return false;
  return Simulator::waitUntil(traceSeconds, [&] {
    strace_ = tracerOf(process);
    return strace_ != 0;
  });
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
    calls.push_back({calls.size() + 1, name, ++counts[name], line});
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
  const auto stopped = [process] {
    const std::string trace = Simulator::readFile(stoppableFolder / "trace");
    return tracerOf(process) != 0 && trace.find("stopped by SIGSTOP") != std::string::npos;
  };
  if (!Simulator::waitUntil(traceSeconds, stopped)) return false;
  // SIGKILL, because the process inherits blocked signals from the one that starts the daemon.
  kill(tracerOf(process), SIGKILL);
  return Simulator::waitUntil(traceSeconds, [&] { return tracerOf(process) == 0; });
}
