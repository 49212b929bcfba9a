#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>

#include "daemon/SmsTimings.h"
#include "daemon/StartUp.h"
#include "tests/CannedApi.h"
#include "tests/Commands.h"
#include "tests/DatagramSocket.h"
#include "tests/Testing.h"

namespace {
/// The call that fails with EPERM; "none" for none. While it is set, fork() creates no process and returns 0.
std::string failing;

bool fails(const char* call) {
  if (failing == call) errno = EPERM;
  return failing == call;
}

template <typename Function>
Function real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
}  // namespace

// These replace functions of the C library.
extern "C" {

pid_t fork() noexcept {
  if (failing.empty()) return real<pid_t (*)()>("fork")();
  return fails("fork") ? -1 : 0;
}

pid_t setsid() noexcept { return fails("setsid") ? -1 : real<pid_t (*)()>("setsid")(); }

int chdir(const char* path) noexcept {
  return fails("chdir") ? -1 : real<int (*)(const char*)>("chdir")(path);
}

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const unsigned mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0;
  va_end(rest);
  if (path == std::string("/dev/null") && fails("open")) return -1;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
}

int sigaction(int signal, const struct sigaction* action, struct sigaction* before) noexcept {
  using Function = int (*)(int, const struct sigaction*, struct sigaction*);
  return signal == SIGTERM && fails("sigaction") ? -1 : real<Function>("sigaction")(signal, action, before);
}

}  // extern "C"

/// The `main` of the daemon, under another name in this program.
int daemonMain();

constexpr char noSwitch[] = "1 [ERROR] Exit: the sms enabled key has invalid value or it is missing.\n";
// Expected: the exit status, if the daemon is to end, and the log.
const Row<const char*, const char*> checkRows[] = {
    {"Nothing", "{}", noSwitch},
    {"EnabledIsText", "{'enabled':'true'}", noSwitch},
    {"EnabledIsNumber", "{'enabled':1}", noSwitch},
    {"OnlyEnabled", "{'enabled':true}",
     "1 [ERROR] Exit: the sms sent limit key has invalid value or it is missing.\n"},
    {"OnlyDisabled", "{'enabled':false}", "0 [ERROR] Exit: the sms are disabled.\n"},
    {"NullSentLimit", "{'enabled':true,'sentLimit':null}",
     "1 [ERROR] Exit: the sms received limit key has invalid value or it is missing.\n"},
    {"NullReceivedLimit", "{'enabled':true,'sentLimit':'x','receivedLimit':null}",
     "1 [ERROR] Exit: the smsCommands sub-collection is invalid or missing.\n"},
    {"Complete", "{'enabled':true,'sentLimit':1,'receivedLimit':2,'smsCommands':null}", ""},
};
TEST_ROWS(Check, StopsAtTheFirstFault, checkRows) {
  LogCapture log;
  const std::optional<int> status = checkSettings(json(GetParam().given));
  EXPECT_EQ((status ? std::to_string(*status) + " " : "") + log.text(), GetParam().expected);
}

namespace {
constexpr char timingsFile[] = "/var/run/config/backofftimers_config";
std::string answer(const char* changes) {
  Json::Value envelope = json("{'code':200,'result':{'enabled':true,'receivedLimit':3,'sentLimit':2}}");
  envelope["result"]["smsCommands"] = json(commandSettings);
  envelope["result"] = merged(envelope["result"], json(changes));
  return CannedApi::ok(envelope.toStyledString());
}

/// Waits for the end of a child. Returns its exit status, or its signal as a negative number.
int exitStatus(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

/// Runs the daemon in a child in which one call fails. The child has received SIGTERM and thus runs no pass.
int runDaemon(const std::string& failingCall) {
  smsTimings.clear();
  std::filesystem::remove(timingsFile);
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0)
    [&]() noexcept {
      failing = failingCall;
      stopRequested = 1;
      std::exit(daemonMain());
    }();
  return exitStatus(child);
}

std::string receiveAll(DatagramSocket& syslog) {
  std::string lines;
  for (std::string line; !(line = syslog.receive()).empty();) lines += line + "\n";
  return lines;
}
}  // namespace

struct EndRow {
  const char* name;
  const char* failingCall;
  const char* settings;  ///< changes of the settings
  int status;            ///< negative for a signal
  const char* log;       ///< the end of the last line
};
const EndRow endRows[] = {
    {"Stopped", "none", "{}", 0, "Error reading sms timings"},
    {"NoFork", "fork", "{}", 1, ""},
    {"NoSession", "setsid", "{}", 1, "Unable to create SID. [1][Operation not permitted]"},
    {"NoRootFolder", "chdir", "{}", 1, "working directory to \"/\". [1][Operation not permitted]"},
    {"NoNullDevice", "open", "{}", 1, "open null device failed!"},
    {"SwitchedOff", "none", "{'enabled':false}", 0, "Exit: the sms are disabled."},
    {"CommandsBeforeLimits", "none", "{'smsCommands':null,'sentLimit':'x'}", 1,
     "Exit: Failed to set SmsCommand config"},
    {"LargestLimits", "none", "{'receivedLimit':4294967295,'sentLimit':4294967295}", 0,
     "Error reading sms timings"},
    {"NegativeLimit", "none", "{'receivedLimit':-1}", -SIGABRT, "Exit: LargestInt out of UInt range"},
    {"LimitAbove32Bits", "none", "{'sentLimit':4294967296}", -SIGABRT, "Exit: LargestInt out of UInt range"},
};
TEST_ROWS(End, HasAnExitStatusAndALogLine, endRows) {
  const EndRow& row = GetParam();
  std::filesystem::remove_all("/var/config");
  const CannedApi api(answer(row.settings));
  DatagramSocket syslog(_PATH_LOG);
  EXPECT_EQ(runDaemon(row.failingCall), row.status);
  EXPECT_THAT(receiveAll(syslog), testing::EndsWith(*row.log != '\0' ? row.log + std::string("\n") : ""));
  EXPECT_EQ(std::filesystem::exists("/var/config"),
            row.status == 0 && row.settings != std::string("{'enabled':false}"));
}

TEST(StartUp, ReadsTheTimingsBeforeTheSettings) {
  DatagramSocket syslog(_PATH_LOG);
  openlog("", 0, 0);
  ::syslog(LOG_ERR, "x");
  closelog();
  std::string priority = syslog.receive();
  priority.erase(priority.find('>') + 1);
  EXPECT_EQ(runDaemon("none"), 1);
  EXPECT_THAT(receiveAll(syslog),
              testing::MatchesRegex(priority + ".* VELD: .ERROR. VELD: Error reading sms timings\n" +
                                    priority + ".* VELD: .ERROR. Exit: error to load settings\n"));
}

TEST(StartUp, InstallsTheHandlerBeforeItAsksForTheSettings) {
  DatagramSocket syslog(_PATH_LOG);
  EXPECT_EQ(runDaemon("sigaction"), 1);
  EXPECT_THAT(receiveAll(syslog), testing::EndsWith("Error reading sms timings\n"));
}

TEST(StartUp, WarnsOnStandardErrorWithoutSyslog) {
  LogCapture log;
  EXPECT_EQ(runDaemon("fork"), 1);
  EXPECT_EQ(log.text(), "[WARNING] unable to log to syslog\n");
}

TEST(Main, CreatesTheFoldersInOrder) {
  const TemporaryFolder folder({{"mkdir", "#!/bin/sh\necho \"$@\" >>/tmp/made\n"}});
  std::filesystem::permissions(folder.path + "/mkdir", std::filesystem::perms{0755});
  const CannedApi api(answer("{}"));
  const std::string path = getenv("PATH");
  setenv("PATH", (folder.path + ":" + path).c_str(), 1);
  EXPECT_EQ(runDaemon("none"), 0);
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(
      readFile("/tmp/made"),
      "-p /tmp/sms/\n-p /var/config/sms/inbox/received\n-p /tmp/sms\n-p /var/config/sms/outbox/sending\n"
      "-p /tmp/sms\n-p /var/config/sms/outbox/sent\n-p /tmp/sms\n-p /var/config/sms/outbox/failed\n-p "
      "/tmp/sms\n");
}

namespace {
/// The state of this process, one line each. `inherited` is a descriptor that the starter left open.
std::string describeProcess(int inherited) {
  std::string text = "folder " + std::filesystem::current_path().string();
  text += getsid(0) == getpid() ? ", session its own" : ", session of its starter";
  text += ", umask " + std::to_string(umask(0)) + "\n";
  for (const int descriptor : {0, 1, 2}) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    text += std::filesystem::read_symlink(link).string() + " mode " +
            std::to_string(fcntl(descriptor, F_GETFL) & O_ACCMODE) + "\n";
  }
  sigset_t blocked;
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  for (int signal = 1; signal < 29; ++signal) {
    struct sigaction action;
    sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) text += "ignores " + std::to_string(signal) + "\n";
    if (action.sa_handler == onTerminate) text += "catches " + std::to_string(signal) + "\n";
    if (sigismember(&blocked, signal) == 1) text += "blocks " + std::to_string(signal) + "\n";
  }
  return text + (fcntl(inherited, F_GETFD) == FD_CLOEXEC ? "closed for tools\n" : "left to tools\n");
}

/// Changes all that a starter can change, and starts the daemon. It writes its state to `pipe`.
[[noreturn]] void startUnkindly(int pipe) {
  umask(077);
  (void)!chdir("/tmp");
  for (const int signal : {SIGHUP, SIGINT, SIGCHLD, SIGRTMAX}) std::signal(signal, SIG_IGN);
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, nullptr);
  const std::string text = startUp() ? describeProcess(pipe) : "no settings\n";
  (void)!write(pipe, text.data(), text.size());
  std::_Exit(0);
}
}  // namespace

TEST(StartUp, GivesTheDaemonTheSameStateWhateverItsStarterDid) {
  const CannedApi api(answer("{}"));
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t starter = fork();
  if (starter == 0) startUnkindly(ends[1]);
  close(ends[1]);
  EXPECT_EQ(exitStatus(starter), 0);
  std::string state(1000, '\0');
  const ssize_t size = read(ends[0], state.data(), state.size());  // the daemon writes once
  close(ends[0]);
  EXPECT_EQ(state.substr(0, size > 0 ? static_cast<std::size_t>(size) : 0),
            "folder /, session its own, umask 0\n/dev/null mode 0\n/dev/null mode 1\n/dev/null mode 2\n"
            "catches 15\nclosed for tools\n");
}

TEST(TerminationHandler, InterruptsCallsAndStaysInstalled) {
  ASSERT_TRUE(installTerminationHandler());
  struct sigaction action;
  sigaction(SIGTERM, nullptr, &action);
  EXPECT_EQ(action.sa_handler, onTerminate);
  EXPECT_EQ(action.sa_flags & (SA_RESTART | static_cast<int>(SA_RESETHAND)), 0);
  const pid_t child = fork();
  if (child == 0) {
    std::raise(SIGTERM);
    std::_Exit(stopRequested == 1 ? 7 : 8);
  }
  EXPECT_EQ(exitStatus(child), 7);
  std::signal(SIGTERM, SIG_DFL);
}

TEST(TerminationHandler, ReportsAFailedSigaction) {
  LogCapture log;
  failing = "sigaction";
  EXPECT_FALSE(installTerminationHandler());
  failing.clear();
  EXPECT_EQ(log.text(), "sigaction");
}
