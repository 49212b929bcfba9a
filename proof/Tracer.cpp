#include "proof/Tracer.h"

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

// The value of a line in the status of a process; "0" if there is none.
std::string statusOf(pid_t process, const std::string& key) {
  const std::string status = Simulator::readFile("/proc/" + std::to_string(process) + "/status");
  const std::size_t found = status.find(key);
  return found == std::string::npos ? "0" : status.substr(found + key.size(), status.find('\n', found));
}
}  // namespace

bool Tracer::attach(pid_t process, const std::string& options) {
  const std::string command = "strace -p " + std::to_string(process) + " -o " + traceFile + " " + options;
  std::filesystem::remove(traceFile);
  // The shell ends at once, and strace becomes a child of this process.
  if (std::system((command + " 2>/dev/null &").c_str()) != 0) return false;
  return Simulator::waitUntil(traceSeconds, [&] {
    strace_ = std::stoi(statusOf(process, "TracerPid:\t"));
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

bool Tracer::awaitStop(pid_t process) {
  return Simulator::waitUntil(traceSeconds, [process] { return statusOf(process, "State:\t")[0] == 'T'; });
}
