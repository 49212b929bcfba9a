#include "simulator/gateway/DaemonProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {
constexpr char outputFile[] = "/run/gateway/daemon-output";  // what the daemon prints before it detaches
constexpr char reportPrefix[] = "/run/gateway/sanitizer";
constexpr char otherFolders[] = ":/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
constexpr std::size_t longestName = 15;  // the kernel shortens the name of a process to this length
constexpr double passSeconds = 60;
constexpr double stopSeconds = 10;
constexpr double signalSeconds = 0.3;

// Returns the daemon's command line. env blocks SIGTERM and ignores SIGCHLD: the daemon must cope with both.
std::vector<std::string> commandFor(const DaemonProcess::Paths& paths) {
  const std::string reports = std::string("log_path=") + reportPrefix;
  return {"env",
          "--block-signal=TERM",
          "--ignore-signal=CHLD",
          "ASAN_OPTIONS=" + reports,
          "UBSAN_OPTIONS=" + reports + ":print_stacktrace=1",
          "PATH=" + paths.toolFolder + otherFolders,
          "LD_PRELOAD=" + paths.clockLibrary,
          paths.program};
}

// Runs the daemon in the child process. Must not allocate memory: another thread may have held the
// allocator's lock during fork(). Closes inherited descriptors, so that a script can count the daemon's own.
[[noreturn]] void run(char* const* command) {
  setpgid(0, 0);  // protects the daemon from Ctrl-C until the daemon has its own session
  const int null = open("/dev/null", O_RDONLY);
  const int output = open(outputFile, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  dup2(null, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  closefrom(STDERR_FILENO + 1);
  execvp(command[0], command);
  _exit(127);
}

std::string readReports() {
  const std::filesystem::path prefix = reportPrefix;
  std::string text;
  for (const std::string& name : listFolder(prefix.parent_path()))
    if (name.rfind(prefix.filename().string() + ".", 0) == 0) text += readFile(prefix.parent_path() / name);
  return text;
}
}  // namespace

DaemonProcess::DaemonProcess(Paths paths, GatewayClock& clock, std::function<bool()> hangs)
    : paths_(std::move(paths)), clock_(clock), hangs_(std::move(hangs)) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::string DaemonProcess::start() {
  if (access(paths_.program.c_str(), X_OK) != 0) return "There is no program " + paths_.program + ".";
  clock_.reset();
  ending_.clear();
  std::vector<std::string> command = commandFor(paths_);
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (std::string& word : command) words.push_back(word.data());
  words.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) run(words.data());
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return "Cannot start the daemon.";
  if (status != 0) {
    ended(status);
    return "The daemon ended with status " + ending_ + " before it detached. " + readFile(outputFile);
  }
  // The detached daemon is an orphan. This process is the subreaper, so the daemon is now its child.
  const std::string name = std::filesystem::path(paths_.program).filename().string().substr(0, longestName);
  for (const pid_t orphan : childrenOf(getpid()))
    if (readFile("/proc/" + std::to_string(orphan) + "/comm") == name + "\n") pid_ = orphan;
  return pid_ != 0 ? "" : "The daemon detached, but its process does not exist.";
}

bool DaemonProcess::stop() {
  const auto hasEnded = [this] { return !running(); };
  signal(SIGTERM);
  if (wait(signalSeconds, hasEnded)) return true;
  // If the signal arrives just before the sleep, it does not end the sleep. grant() then ends the sleep.
  clock_.grant();
  wait(stopSeconds, [&] { return hasEnded() || hangs_(); });
  return hasEnded();
}

bool DaemonProcess::running() {
  int status = 0;
  if (pid_ != 0 && waitpid(pid_, &status, WNOHANG) == pid_) {
    pid_ = 0;
    ended(status);
  }
  return pid_ != 0;
}

void DaemonProcess::ended(int status) {
  ending_ = WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                : std::to_string(WEXITSTATUS(status));
  if (const std::string reports = readReports(); !reports.empty()) ending_ += "\n" + reports;
}

bool DaemonProcess::signal(int number) { return running() && kill(pid_, number) == 0; }

std::string DaemonProcess::ending() {
  running();
  return ending_;
}

bool DaemonProcess::wait(double seconds, const std::function<bool()>& done) {
  bool isDone = false;
  const auto ends = [&] {
    isDone = done();
    return isDone || interrupted;
  };
  waitUntil(seconds, ends, pause);
  return isDone;
}

DaemonProcess::Passed DaemonProcess::awaitSleep(double seconds) {
  wait(seconds, [this] { return clock_.sleeping() || !running() || hangs_(); });
  if (!running()) return Passed::Ended;
  return clock_.sleeping() ? Passed::Yes : Passed::NotYet;
}

DaemonProcess::Passed DaemonProcess::pass() {
  const Passed before = awaitSleep(passSeconds);
  if (before != Passed::Yes) return before;
  clock_.grant();
  return awaitSleep(passSeconds);
}
}  // namespace Simulator
