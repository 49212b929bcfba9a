#include "standalone/api/Answer.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>

#include "commands/CommandTable.h"
#include "daemon/StartUp.h"
#include "standalone/api/CommandProcess.h"
#include "standalone/api/Reply.h"
#include "standalone/api/StrictJson.h"
#include "support/Logger.h"

namespace Standalone {
namespace {
constexpr int programSeconds = 60;
constexpr std::string_view commandPath = "/api/command/";
constexpr char settingsName[] = "/settings.json";
constexpr char commandFolder[] = "/commands.d";

enum Code : int { Accepted = 200, Malformed = 400, SwitchedOff = 403, Missing = 404, Faulty = 500 };

// Reads the settings. Logs an ERROR and returns nullopt if the file cannot be read or is not a JSON object.
std::optional<Json::Value> loadSettings(const std::string& folder) {
  const std::string path = folder + settingsName;
  std::ifstream file(path);
  std::string fault = "cannot be read";
  std::optional<Json::Value> settings;
  if (file.is_open()) {
    fault = "does not contain an object";
    settings = parseStrictJson(std::string(std::istreambuf_iterator<char>(file), {}), fault);
  }
  if (settings && settings->isObject()) return settings;
  ORVEL_LOG(ERROR, "%s: %s", path.c_str(), fault.c_str());
  return std::nullopt;
}

// Returns NAME of the path /api/command/NAME. Returns an empty text for any other path.
std::string commandName(const std::string& path) {
  if (path.compare(0, commandPath.size(), commandPath) != 0) return "";
  const std::string name = path.substr(commandPath.size());
  constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789_-";
  return name.find_first_not_of(letters) == std::string::npos ? name : "";
}

bool isProgram(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Returns true if the settings permit the command. veld has checked this, but others may use the socket, too.
bool isPermitted(const std::string& name, const Json::Value& settings) {
  const Json::Value& commands = settings[SettingsKey::smsCommands];
  if (!commands.isObject() || commands["enabled"] != true) return false;
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr && name == row.path) return commands[row.key] == true;
  return true;
}

Answer refusal(int code, const char* reason) { return {code, reason, "", {}}; }

Answer answerSettings(const std::string& folder) {
  const std::optional<Json::Value> settings = loadSettings(folder);
  if (!settings) return refusal(Faulty, "the settings cannot be read");
  return {Accepted, *settings, "", {}};
}

Answer answerCommand(const HttpRequest& request, const std::string& folder) {
  const std::string name = commandName(request.path);
  const std::string program = folder + commandFolder + "/" + name;
  if (!isProgram(program)) return refusal(Missing, "no such command");
  const std::optional<CommandRequest> command = parseCommandRequest(request.body);
  if (!command) return refusal(Malformed, "the body is not a command");
  const std::optional<Json::Value> settings = loadSettings(folder);
  if (!settings) return refusal(Faulty, "the settings cannot be read");
  if (!isPermitted(name, *settings)) return refusal(SwitchedOff, "the command is switched off");
  return {Accepted, Json::nullValue, program, *command};
}

// Waits for the lock on the programs. This process then holds the lock until it ends. False on failure.
bool waitForTurn(const std::string& folder) {
  const int programs = open((folder + commandFolder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return programs >= 0 && flock(programs, LOCK_EX) == 0;
}

const char* resultOf(const Ending& ending) {
  if (ending.timedOut) return "ended after 60 seconds";
  return ending.succeeded ? "done" : "failed";
}

std::string pathVariable() {
  const char* const path = std::getenv("PATH");
  return std::string("PATH=") + (path != nullptr ? path : "/usr/sbin:/usr/bin:/sbin:/bin");
}
}  // namespace

Answer answerTo(const HttpRequest& request, const std::string& folder) {
  if (request.method == "GET" && request.path == settingsPath) return answerSettings(folder);
  if (request.method == "POST") return answerCommand(request, folder);
  return refusal(Missing, "no such resource");
}

Answer answerToMalformed() { return refusal(Malformed, "this is not an HTTP request"); }

void runProgram(const Answer& answer, const std::string& folder) {
  if (!waitForTurn(folder)) {
    ORVEL_LOG(ERROR, "%s is not run: %s cannot be locked", answer.program.c_str(), folder.c_str());
    return;
  }
  const CommandRequest& command = answer.command;
  std::vector<std::string> words = {answer.program};
  words.insert(words.end(), command.args.begin(), command.args.end());
  const Ending ending =
      runCommand(words, {pathVariable(), "SMS_SENDER=" + command.sender}, "", programSeconds);
  ORVEL_LOG(INFO, "%s for %s: %s", answer.program.c_str(), command.sender.c_str(), resultOf(ending));
  const std::string text = replyText(ending.output, ending.succeeded);
  const Ending sent =
      runCommand({"veldctl", "send", command.sender, "-"}, {pathVariable()}, text, programSeconds);
  if (!sent.succeeded) ORVEL_LOG(ERROR, "the answer to %s cannot be queued", command.sender.c_str());
}
}  // namespace Standalone
