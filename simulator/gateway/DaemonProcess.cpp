#include "simulator/gateway/DaemonProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

[[noreturn]] void run(const DaemonProcess::Paths& paths) {
  const std::string reports = std::string("log_path=") + DaemonProcess::reportPrefix;
  setenv("ASAN_OPTIONS", reports.c_str(), 1);
  setenv("UBSAN_OPTIONS", (reports + ":print_stacktrace=1").c_str(), 1);
  setenv("PATH", (paths.toolFolder + ":/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin").c_str(),
         1);
  if (!paths.clockLibrary.empty()) setenv("LD_PRELOAD", paths.clockLibrary.c_str(), 1);
  const int null = open("/dev/null", O_RDONLY);
  const int output = open(DaemonProcess::outputFile, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  dup2(null, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  // What a careless starter leaves behind, those two descriptors besides; the daemon is to set it right.
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGTERM);
  sigprocmask(SIG_BLOCK, &held, nullptr);
  ::signal(SIGCHLD, SIG_IGN);
  execl(paths.program.c_str(), paths.program.c_str(), nullptr);
  _exit(127);
}

std::string describe(int status) {
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return std::to_string(WEXITSTATUS(status));
}

std::string readReports() {
  const std::filesystem::path prefix = DaemonProcess::reportPrefix;
  std::string text;
  for (const std::string& name : listFolder(prefix.parent_path())) {
    if (name.rfind(prefix.filename().string() + ".", 0) == 0) text += readFile(prefix.parent_path() / name);
  }
  return text;
}

// The children of a process that run a program of the given name; of any, if that is empty.
std::vector<pid_t> childrenOf(pid_t parent, const std::string& name) {
  std::vector<pid_t> found;
  for (const std::string& entry : listFolder("/proc")) {
    if (entry.find_first_not_of("0123456789") != std::string::npos) continue;
    // "PID (NAME) STATE PARENT ..."
    const std::string stat = readFile("/proc/" + entry + "/stat");
    const std::size_t begin = stat.find('(');
    const std::size_t end = stat.rfind(')');
    if (end == std::string::npos) continue;
    std::istringstream rest(stat.substr(end + 1));
    std::string state;
    pid_t itsParent = 0;
    const bool named = name.empty() || stat.substr(begin + 1, end - begin - 1) == name;
    if (named && rest >> state >> itsParent && itsParent == parent) found.push_back(std::stoi(entry));
  }
  return found;
}

}  // namespace

DaemonProcess::DaemonProcess(Paths paths) : paths_(std::move(paths)) { prctl(PR_SET_CHILD_SUBREAPER, 1); }

bool DaemonProcess::start(std::string& problem) {
  if (running()) {
    problem = "The daemon is running already.";
    return false;
  }
  if (access(paths_.program.c_str(), X_OK) != 0) {
    problem = "There is no program " + paths_.program + ".";
    return false;
  }
  ending_.clear();
  const pid_t child = fork();
  if (child == 0) run(paths_);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) {
    problem = "The daemon could not be started.";
    return false;
  }
  if (status != 0) {
    ended(status);
    problem = "The daemon ended before it had detached, with " + ending_ + ". " + readFile(outputFile);
    return false;
  }
  // The orphan became a child of this process. The kernel cuts its name at fifteen bytes.
  const std::string name = std::filesystem::path(paths_.program).filename().string().substr(0, 15);
  const std::vector<pid_t> found = childrenOf(getpid(), name);
  if (found.size() == 1) {
    pid_ = found.front();
    return true;
  }
  problem = "The daemon left " + std::to_string(found.size()) + " processes behind when it detached.";
  return false;
}

bool DaemonProcess::running() {
  int status = 0;
  if (pid_ != 0 && waitpid(pid_, &status, WNOHANG) == pid_) {
    pid_ = 0;
    ended(status);
  }
  return pid_ != 0;
}

std::size_t DaemonProcess::descriptors() const {
  return listFolder("/proc/" + std::to_string(pid_) + "/fd").size();
}

std::size_t DaemonProcess::children() const { return pid_ == 0 ? 0 : childrenOf(pid_, "").size(); }

void DaemonProcess::ended(int status) {
  ending_ = describe(status);
  if (const std::string reports = readReports(); !reports.empty()) ending_ += "\n" + reports;
}

bool DaemonProcess::signal(int number) { return running() && kill(pid_, number) == 0; }

std::string DaemonProcess::ending() {
  running();
  return ending_;
}

}  // namespace Simulator
