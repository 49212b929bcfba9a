#include "faults/Tracer.h"

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

// A value of /proc/PID/status, as in "TracerPid"; empty when there is no such process.
std::string statusOf(pid_t process, const std::string& key) {
  std::istringstream lines(Simulator::readFile("/proc/" + std::to_string(process) + "/status"));
  for (std::string line; std::getline(lines, line);)
    if (line.rfind(key + ":\t", 0) == 0) return line.substr(key.size() + 2);
  return "";
}

}  // namespace

bool Tracer::attach(pid_t process, const std::string& injection) {
  const std::string traced = injection.empty() ? "all" : injection.substr(0, injection.find(':'));
  std::filesystem::remove(traceFile);
  strace_ = fork();
  if (strace_ == 0) {
    if (freopen("/dev/null", "w", stderr) == nullptr) _exit(1);
    const std::string pid = std::to_string(process);
    const std::string inject = injection.empty() ? "trace=all" : "inject=" + injection;
    execlp("strace", "strace", "-o", traceFile, "-e", ("trace=" + traced).c_str(), "-e", inject.c_str(), "-p",
           pid.c_str(), nullptr);
    _exit(127);
  }
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
  kill(strace_, SIGTERM);
  waitpid(strace_, nullptr, 0);  // fails when it has ended with the daemon, and was reaped with the orphans
  strace_ = 0;
}

std::vector<Tracer::Call> Tracer::calls() {
  std::vector<Call> calls;
  std::map<std::string, unsigned> counts;
  std::istringstream lines(Simulator::readFile(traceFile));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t end = line.find('(');
    if (end == std::string::npos || line.find_first_of(" -+") < end) continue;  // a signal, an end
    const std::string name = line.substr(0, end);
    calls.push_back({static_cast<unsigned>(calls.size()) + 1, name, ++counts[name], line});
  }
  return calls;
}

bool Tracer::struck() {
  const std::string trace = Simulator::readFile(traceFile);
  return trace.find("(INJECTED)") != std::string::npos || trace.find("+++ killed") != std::string::npos;
}

std::string Tracer::stoppingOnce(const std::string& daemon, const std::string& preloaded) {
  const std::filesystem::path folder = "/run/stopping";
  std::filesystem::create_directories(folder);
  const std::string program = folder / std::filesystem::path(daemon).filename();
  // What the new process does first is setting its umask.
  const bool written = Simulator::writeFile(program,
                                            "#!/bin/sh\n"
                                            "preload=" +
                                                preloaded + " daemon=" + daemon +
                                                " once=/run/stopping/once\n"
                                                "[ ! -e $once ] || exec env LD_PRELOAD=$preload $daemon\n"
                                                ": >$once\n"
                                                "exec strace -D -I 1 -f -o /dev/null -e trace=umask -e "
                                                "inject=umask:signal=STOP -E LD_PRELOAD=$preload $daemon\n");
  std::filesystem::remove(folder / "once");
  return written && chmod(program.c_str(), 0700) == 0 ? program : "";
}

bool Tracer::awaitStop(pid_t process) {
  if (!Simulator::waitUntil(traceSeconds,
                            [&] { return statusOf(process, "State").find_first_of("tT") == 0; }))
    return false;
  const std::string tracer = statusOf(process, "TracerPid");
  kill(static_cast<pid_t>(std::stoi(tracer)), SIGKILL);  // it inherits that other signals are held back
  return Simulator::waitUntil(traceSeconds, [&] { return statusOf(process, "TracerPid") == "0"; });
}
