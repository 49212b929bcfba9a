#include "daemon/StartUp.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "daemon/LocalApi.h"
#include "daemon/SmsTimings.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

volatile std::sig_atomic_t stopRequested = 0;

namespace {
constexpr char syslogIdent[] = "VELD";
constexpr char nullDevice[] = "/dev/null";
constexpr char ownDescriptors[] = "/proc/self/fd";  // one entry for each open file descriptor

// Sets close-on-exec on every inherited file descriptor above 2, so that no tool inherits it.
void keepDescriptorsFromTools() {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(ownDescriptors), closedir);
  if (directory == nullptr) return;
  while (const dirent* entry = readdir(directory.get())) {
    const int descriptor = std::atoi(entry->d_name);
    if (descriptor > STDERR_FILENO) fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  }
}

// Gives every signal its default disposition: an ignored signal stays ignored across exec. If SIGCHLD is
// ignored, system() loses the exit status of its child.
void resetSignals() {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) std::signal(signal, SIG_DFL);
}

void setUpLogging() {
  using Orvel::Logger;
  if (Logger::setup(Logger::PrintMode::Syslog, syslogIdent, 0, 0)) return;
  Logger::setup(Logger::PrintMode::StandardError);
  ORVEL_LOG(WARNING, "unable to log to syslog");
}

// Logs the exception that ends the process: the JSON library throws one for a setting of the wrong type.
[[noreturn]] void sayWhyAndAbort() {
  try {
    if (std::current_exception() != nullptr) throw;
  } catch (const std::exception& exception) {
    ORVEL_LOG(FATAL, "Exit: %s", exception.what());
  }
  std::abort();
}

// Forks. The parent exits; the child continues as the leader of a new session.
void detach() {
  const pid_t child = fork();
  if (child < 0) std::exit(EXIT_FAILURE);
  if (child > 0) std::exit(EXIT_SUCCESS);
  umask(0);
  if (setsid() < 0) {
    ORVEL_LOG(ERROR, "Unable to create SID. [%d][%s]", errno, std::strerror(errno));
    std::exit(EXIT_FAILURE);
  }
  if (chdir("/") < 0) {
    ORVEL_LOG(ERROR, "Unable to change working directory to \"/\". [%d][%s]", errno, std::strerror(errno));
    std::exit(EXIT_FAILURE);
  }
}

bool openNullDevices() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(descriptor);
  for (const int mode : {O_RDONLY, O_WRONLY, O_RDWR}) {
    if (open(nullDevice, mode) != -1) continue;
    ORVEL_LOG(ERROR, "open null device failed!");
    return false;
  }
  return true;
}

Json::Value loadSettings() {
  Json::Value settings;
  if (!loadFromApi(std::string(localApiHost) + settingsPath, settings)) {
    ORVEL_LOG(ERROR, "Exit: error to load settings");
    std::exit(EXIT_FAILURE);
  }
  return settings;
}
}  // namespace

void onTerminate(int /*signal*/) { stopRequested = 1; }

bool installTerminationHandler() {
  struct sigaction action{};
  action.sa_handler = onTerminate;
  sigemptyset(&action.sa_mask);
  if (sigaction(SIGTERM, &action, nullptr) != 0) {
    std::fputs("sigaction", stderr);
    return false;
  }
  sigprocmask(SIG_SETMASK, &action.sa_mask, nullptr);
  return true;
}

std::optional<int> checkSettings(const Json::Value& settings) {
  if (!settings.isMember(SettingsKey::enabled) || !settings[SettingsKey::enabled].isBool()) {
    ORVEL_LOG(ERROR, "Exit: the sms enabled key has invalid value or it is missing.");
    return EXIT_FAILURE;
  }
  if (!settings[SettingsKey::enabled].asBool()) {
    ORVEL_LOG(ERROR, "Exit: the sms are disabled.");
    return EXIT_SUCCESS;
  }
  if (!settings.isMember(SettingsKey::sentLimit)) {
    ORVEL_LOG(ERROR, "Exit: the sms sent limit key has invalid value or it is missing.");
    return EXIT_FAILURE;
  }
  if (!settings.isMember(SettingsKey::receivedLimit)) {
    ORVEL_LOG(ERROR, "Exit: the sms received limit key has invalid value or it is missing.");
    return EXIT_FAILURE;
  }
  if (!settings.isMember(SettingsKey::smsCommands)) {
    ORVEL_LOG(ERROR, "Exit: the smsCommands sub-collection is invalid or missing.");
    return EXIT_FAILURE;
  }
  return std::nullopt;
}

std::optional<Json::Value> startUp() {
  std::set_terminate(sayWhyAndAbort);
  keepDescriptorsFromTools();
  resetSignals();
  setUpLogging();
  detach();
  Orvel::Watchdog::setup();
  if (!openNullDevices()) return std::nullopt;
  if (readSmsTimings()) ORVEL_LOG(ERROR, "VELD: Error reading sms timings");
  if (!installTerminationHandler()) return std::nullopt;
  Json::Value settings = loadSettings();
  if (const std::optional<int> status = checkSettings(settings)) std::exit(*status);
  return settings;
}
