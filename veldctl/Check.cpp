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
#include "veldctl/Health.h"
#include "veldctl/ShortMessage.h"

namespace {

using namespace Output;

// The settings as their users see them.
class Settings {
 public:
  explicit Settings(const Json::Value& all) : all_(all) {}

  Json::Value at(const std::string& path) const { return Json::Path(path).resolve(all_, Json::nullValue); }
  bool isOn(const std::string& path) const { return at(path) == true; }

  void need(Report& report, const std::string& path, Json::ValueType type, bool required = true) const {
    const Json::Value value = at(path);
    const bool good = type == Json::uintValue ? value.isUInt() : value.type() == type;
    if (value.isNull() ? required : !good)
      report.add(Look, path + (value.isNull() ? " is missing" : " has the wrong type"));
  }

 private:
  const Json::Value& all_;
};

// A sender is a number as the tool prints it, or a name of eleven characters at most.
bool canMatch(const Json::Value& entry) {
  const std::string text = entry.isConvertibleTo(Json::stringValue) ? entry.asString() : "";
  const auto isLetter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
  const bool isName = text.size() <= 11 && std::any_of(text.begin(), text.end(), isLetter);
  return ShortMessage::isNumber(text) || (isName && Orvel::Text::trim(text) == text);
}

void reportPermissions(Report& report, const Settings& settings) {
  const bool byNumber = settings.isOn("smsCommands.whitelist.enabled");
  const bool byPassword = settings.isOn("smsCommands.password.enabled");
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr && !byNumber && !byPassword &&
        settings.isOn(std::string("smsCommands.") + row.key))
      report.add(Ill,
                 std::string("anyone may send #") + row.keyword + ": neither whitelist nor password is on");
  const Json::Value password = settings.at("smsCommands.password.text");
  if (byPassword && password == "") report.add(Ill, "the password is empty: nobody needs one");
  if (byPassword && password.isString() && password.asString().find(' ') != std::string::npos)
    report.add(Ill, "the password has a blank: no command can carry it");
  const Json::Value numbers = settings.at("smsCommands.whitelist.numbers");
  if (!byNumber || !numbers.isArray()) return;
  if (numbers.empty()) report.add(Look, "the whitelist is empty: nobody may send commands");
  for (const Json::Value& entry : numbers)
    if (!canMatch(entry)) report.add(Look, "no sender can match " + line(entry) + " in the whitelist");
}

// Whatever is wrong, and then what the daemon itself says, which is the first of its faults.
void reportSettings(Report& report, const Json::Value& all) try {
  const Settings settings(all);
  settings.need(report, SettingsKey::enabled, Json::booleanValue);
  settings.need(report, SettingsKey::receivedLimit, Json::uintValue);
  settings.need(report, SettingsKey::sentLimit, Json::uintValue);
  for (const char* const part : {"smsCommands", "smsCommands.whitelist", "smsCommands.password"})
    settings.need(report, std::string(part) + ".enabled", Json::booleanValue);
  settings.need(report, "smsCommands.whitelist.numbers", Json::arrayValue);
  settings.need(report, "smsCommands.password.text", Json::stringValue);
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr)
      settings.need(report, std::string("smsCommands.") + row.key, Json::booleanValue,
                    row.id <= SMSCMD_REBOOT);
  if (settings.isOn("smsCommands.enabled")) reportPermissions(report, settings);
  SMSCommandConfig config;
  const std::optional<int> end = checkSettings(all);
  if (end == EXIT_SUCCESS) return report.add(Well, "SMS is switched off");
  const bool good = !end && config.setConfig(all[SettingsKey::smsCommands]);
  if (good) (void)(all[SettingsKey::receivedLimit].asUInt() + all[SettingsKey::sentLimit].asUInt());
  report.add(good ? Well : Ill,
             std::string("the daemon ") + (good ? "starts" : "does not start") + " with these settings");
} catch (const Json::Exception& exception) {
  report.add(Ill, std::string("the daemon does not start with these settings: ") + exception.what());
}

// Whether `path` is there, and not open to others in a way that is `forbidden`.
void reportMode(Report& report, const std::string& path, mode_t forbidden, const char* danger) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return report.add(Ill, path + ": " + std::strerror(errno));
  if ((info.st_mode & forbidden) != 0) report.add(Ill, path + " is open to every user: " + danger);
}

}  // namespace

void reportCheck(Report& report, const Folders& folders, const std::string& sendLog,
                 const Json::Value& settings) {
  if (settings.isNull()) report.add(Ill, "the local API does not answer");
  if (!settings.isNull()) reportSettings(report, settings);
  std::string spans;
  if (readSmsTimings())
    report.add(Look, "there are no back-off timers: a failed message is never sent again");
  for (const std::uint32_t seconds : smsTimings) spans += (spans.empty() ? "" : ", ") + span(seconds);
  if (!spans.empty()) report.add(Well, "a failed message is sent again after " + spans);
  const char* const path = std::getenv("PATH");
  const auto programs = Orvel::Text::split(path != nullptr ? path : "", ":", 1000);
  for (const std::string tool : {"/sms", "/bash"}) {
    const auto has = [&](const std::string& folder) { return access((folder + tool).c_str(), X_OK) == 0; };
    if (std::none_of(programs.begin(), programs.end(), has))
      report.add(Ill, "there is no program " + tool.substr(1) + " in the path");
  }
  reportMode(report, folders.root(), S_IRWXO, "each can run programs as the daemon");
  for (const int status : MessageStatus::all) reportMode(report, folders.path(status), 0, "");
  reportMode(report, sendLog, S_IROTH | S_IWOTH, "it tells what was sent");
}
