#include "daemon/StartUp.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "daemon/LocalApi.h"
#include "daemon/SmsTimings.h"
#include "support/Logger.h"

volatile std::sig_atomic_t stopRequested = 0;

namespace {

constexpr char syslogIdent[] = "VELD";
constexpr char nullDevice[] = "/dev/null";
constexpr char settingsPath[] = "/api/sms";

void setUpLogging() {
  using Orvel::Logger;
  if (Logger::setup(Logger::PrintMode::Syslog, syslogIdent, 0, 0)) return;
  Logger::setup(Logger::PrintMode::StandardError);
  ORVEL_LOG(WARNING, "unable to log to syslog");
}

// Goes on in a child, in a session of its own.
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

bool installTerminationHandler() {
  struct sigaction action {};
  action.sa_handler = onTerminate;
  sigemptyset(&action.sa_mask);
  if (sigaction(SIGTERM, &action, nullptr) == 0) return true;
  std::fputs("sigaction", stderr);
  return false;
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

std::optional<int> checkSettings(const Json::Value& settings) {
  if (!settings.isMember("enabled") || !settings["enabled"].isBool()) {
    ORVEL_LOG(ERROR, "Exit: the sms enabled key has invalid value or it is missing.");
    return EXIT_FAILURE;
  }
  if (!settings["enabled"].asBool()) {
    ORVEL_LOG(ERROR, "Exit: the sms are disabled.");
    return EXIT_SUCCESS;
  }
  if (!settings.isMember("sentLimit")) {
    ORVEL_LOG(ERROR, "Exit: the sms sent limit key has invalid value or it is missing.");
    return EXIT_FAILURE;
  }
  if (!settings.isMember("receivedLimit")) {
    ORVEL_LOG(ERROR, "Exit: the sms received limit key has invalid value or it is missing.");
    return EXIT_FAILURE;
  }
  if (!settings.isMember("smsCommands")) {
    ORVEL_LOG(ERROR, "Exit: the smsCommands sub-collection is invalid or missing.");
    return EXIT_FAILURE;
  }
  return std::nullopt;
}

std::optional<Json::Value> startUp() {
  setUpLogging();
  detach();
  if (!openNullDevices()) return std::nullopt;
  if (readSmsTimings()) ORVEL_LOG(ERROR, "VELD: Error reading sms timings");
  if (!installTerminationHandler()) return std::nullopt;
  Json::Value settings = loadSettings();
  if (const std::optional<int> status = checkSettings(settings)) std::exit(*status);
  return settings;
}
