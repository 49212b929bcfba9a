#include "veldctl/Check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "commands/CommandTable.h"
#include "daemon/SmsTimings.h"
#include "daemon/StartUp.h"
#include "storage/MessageStatus.h"
#include "support/Text.h"
#include "veldctl/ShortMessage.h"

namespace {

using namespace Output;

struct Setting {
  std::string path;
  Json::ValueType type;
  bool required = true;
};

std::vector<Setting> knownSettings() {
  std::vector<Setting> all = {{SettingsKey::enabled, Json::booleanValue},
                              {SettingsKey::receivedLimit, Json::uintValue},
                              {SettingsKey::sentLimit, Json::uintValue},
                              {SettingsKey::smsCommands, Json::objectValue},
                              {"smsCommands.enabled", Json::booleanValue},
                              {"smsCommands.whitelist.enabled", Json::booleanValue},
                              {"smsCommands.whitelist.numbers", Json::arrayValue},
                              {"smsCommands.password.enabled", Json::booleanValue},
                              {"smsCommands.password.text", Json::stringValue}};
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr)
      all.push_back({std::string("smsCommands.") + row.key, Json::booleanValue,
                     row.id == SMSCMD_CHECKIN || row.id == SMSCMD_REBOOT});
  return all;
}

// A sender is a number as the tool prints it, or a name of eleven characters at most.
bool canMatch(const Json::Value& entry) {
  if (!entry.isConvertibleTo(Json::stringValue)) return false;
  const std::string text = entry.asString();
  const auto isLetter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
  return ShortMessage::isNumber(text) || (text.size() <= 11 && Orvel::Text::trim(text) == text &&
                                          std::any_of(text.begin(), text.end(), isLetter));
}

// Whatever is wrong, and then what the daemon itself says, which is the first of its faults.
void addSettings(Findings& findings, const Json::Value& settings) try {
  if (settings.isNull()) return findings.add(Ill, "the local API does not answer");
  const auto at = [&](const std::string& path) {
    return Json::Path(path).resolve(settings, Json::nullValue);
  };
  for (const Setting& setting : knownSettings()) {
    const Json::Value value = at(setting.path);
    if (value.isNull()                    ? setting.required
        : setting.type == Json::uintValue ? !value.isUInt()
                                          : value.type() != setting.type)
      findings.add(Look, setting.path + (value.isNull() ? " is missing" : " has the wrong type"));
  }
  const bool byNumber = at("smsCommands.whitelist.enabled") == true,
             byPassword = at("smsCommands.password.enabled") == true;
  const Json::Value password = at("smsCommands.password.text"), numbers = at("smsCommands.whitelist.numbers");
  if (at("smsCommands.enabled") == true) {
    for (const CommandRow& row : commandRows)
      if (row.key != nullptr && !byNumber && !byPassword && at(std::string("smsCommands.") + row.key) == true)
        findings.add(
            Ill, std::string("anyone may send #") + row.keyword + ": neither whitelist nor password is on");
    if (byPassword && password == "") findings.add(Ill, "the password is empty: nobody needs one");
    if (byPassword && password.isString() && password.asString().find(' ') != std::string::npos)
      findings.add(Ill, "the password has a blank: no command can carry it");
    if (byNumber && numbers.isArray() && numbers.empty())
      findings.add(Look, "the whitelist is empty: nobody may send commands");
    for (const Json::Value& entry : byNumber&& numbers.isArray() ? numbers : Json::Value(Json::arrayValue))
      if (!canMatch(entry)) findings.add(Look, "no sender can match " + line(entry) + " in the whitelist");
  }
  SMSCommandConfig config;
  const std::optional<int> end = checkSettings(settings);
  if (end == EXIT_SUCCESS) return findings.add(Well, "SMS is switched off");
  const bool good = !end && config.setConfig(settings[SettingsKey::smsCommands]);
  if (good) (void)(settings[SettingsKey::receivedLimit].asUInt() + settings[SettingsKey::sentLimit].asUInt());
  findings.add(good ? Well : Ill, good ? "the daemon starts with these settings"
                                       : "the daemon does not start with these settings");
} catch (const Json::Exception& exception) {
  findings.add(Ill, std::string("the daemon does not start with these settings: ") + exception.what());
}

bool isInPath(const std::string& tool) {
  const char* const path = std::getenv("PATH");
  const auto folders = Orvel::Text::split(path != nullptr ? path : "", ":", 1000);
  return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
    return access((folder + "/" + tool).c_str(), X_OK) == 0;
  });
}

// Whether `path` is there, and not open to others in a way that is `forbidden`.
void addMode(Findings& findings, const std::string& path, mode_t forbidden, const std::string& danger) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return findings.add(Ill, path + ": " + std::strerror(errno));
  if ((info.st_mode & forbidden) != 0) findings.add(Ill, path + " is open to every user: " + danger);
}

}  // namespace

Findings check(const Folders& folders, const std::string& sendLog, const Json::Value& settings) {
  Findings findings;
  addSettings(findings, settings);
  std::string spans;
  if (readSmsTimings())
    findings.add(Look, "there are no back-off timers: a failed message is never sent again");
  for (const std::uint32_t seconds : smsTimings) spans += (spans.empty() ? "" : ", ") + span(seconds);
  if (!spans.empty()) findings.add(Well, "a failed message is sent again after " + spans);
  for (const char* const tool : {"sms", "bash"})
    if (!isInPath(tool)) findings.add(Ill, std::string("there is no program ") + tool + " in the path");
  addMode(findings, folders.root(), S_IRWXO, "each can run programs as the daemon");
  for (const int status : MessageStatus::all) addMode(findings, folders.path(status), 0, "");
  addMode(findings, sendLog, S_IROTH | S_IWOTH, "it tells what was sent");
  return findings;
}
