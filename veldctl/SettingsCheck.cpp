#include "veldctl/SettingsCheck.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "commands/CommandTable.h"
#include "daemon/StartUp.h"
#include "support/Text.h"
#include "veldctl/CapturedLog.h"
#include "veldctl/Output.h"
#include "veldctl/ShortMessage.h"

namespace {
// Finds settings by paths such as "smsCommands.password.text".
class Settings {
 public:
  explicit Settings(const Json::Value& all) : all_(all) {}

  Json::Value at(const std::string& path) const { return Json::Path(path).resolve(all_, Json::nullValue); }
  bool isOn(const std::string& path) const { return at(path) == true; }

  void reportType(Report& report, const std::string& path, Json::ValueType type,
                  bool isRequired = true) const {
    const Json::Value value = at(path);
    if (value.isNull()) {
      if (isRequired) report.add(Look, path + " is missing");
      return;
    }
    const bool isGood = type == Json::uintValue ? value.isUInt() : value.type() == type;
    if (!isGood) report.add(Look, path + " has the wrong type");
  }

 private:
  const Json::Value& all_;
};

std::string pathOf(const CommandRow& row) { return std::string("smsCommands.") + row.key; }

void reportTypes(Report& report, const Settings& settings) {
  settings.reportType(report, SettingsKey::enabled, Json::booleanValue);
  settings.reportType(report, SettingsKey::receivedLimit, Json::uintValue);
  settings.reportType(report, SettingsKey::sentLimit, Json::uintValue);
  for (const char* const part : {"smsCommands", "smsCommands.whitelist", "smsCommands.password"})
    settings.reportType(report, std::string(part) + ".enabled", Json::booleanValue);
  settings.reportType(report, "smsCommands.whitelist.numbers", Json::arrayValue);
  settings.reportType(report, "smsCommands.password.text", Json::stringValue);
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr)
      settings.reportType(report, pathOf(row), Json::booleanValue, row.id <= SMSCMD_REBOOT);
}

// Returns true if `entry` can be the number or the name of a sender. A name has at most eleven characters.
bool canMatch(const Json::Value& entry) {
  constexpr std::size_t longestName = 11;
  const std::string text = entry.isConvertibleTo(Json::stringValue) ? entry.asString() : "";
  const auto isLetter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
  const bool isName = text.size() <= longestName && std::any_of(text.begin(), text.end(), isLetter);
  return ShortMessage::isNumber(text) || (isName && Orvel::Text::trim(text) == text);
}

void reportOpenCommands(Report& report, const Settings& settings) {
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr && settings.isOn(pathOf(row)))
      report.add(Ill, std::string("anyone may send #") + row.keyword + ": whitelist and password are off");
}

void reportPassword(Report& report, const Json::Value& password) {
  if (password == "") report.add(Ill, "the password is empty: commands need no password");
  if (password.isString() && password.asString().find(' ') != std::string::npos)
    report.add(Ill, "the password contains a blank: no command can match it");
}

void reportWhitelist(Report& report, const Json::Value& numbers) {
  if (!numbers.isArray()) return;
  if (numbers.empty()) report.add(Look, "the whitelist is empty: nobody may send commands");
  for (const Json::Value& entry : numbers)
    if (!canMatch(entry))
      report.add(Look, "no sender can match " + Output::line(entry) + " in the whitelist");
}

void reportPermissions(Report& report, const Settings& settings) {
  const bool byNumber = settings.isOn("smsCommands.whitelist.enabled");
  const bool byPassword = settings.isOn("smsCommands.password.enabled");
  if (!byNumber && !byPassword) reportOpenCommands(report, settings);
  if (byPassword) reportPassword(report, settings.at("smsCommands.password.text"));
  if (byNumber) reportWhitelist(report, settings.at("smsCommands.whitelist.numbers"));
}

// What the daemon would do with the settings.
struct Start {
  bool isOff = false;   // true if the daemon would end, because SMS is switched off
  bool isGood = false;  // true if the daemon would run
};

// Runs the daemon's own checks of the settings. Throws the Json::Exception that would end the daemon.
Start tryStart(const Json::Value& all) {
  const std::optional<int> exitStatus = checkSettings(all);
  if (exitStatus) return {*exitStatus == EXIT_SUCCESS, false};
  SMSCommandConfig config;
  if (!config.setConfig(all[SettingsKey::smsCommands])) return {};
  (void)(all[SettingsKey::receivedLimit].asUInt() + all[SettingsKey::sentLimit].asUInt());  // may throw
  return {false, true};
}

void reportStart(Report& report, const Json::Value& all) {
  Start start;
  const auto log = capturedLog([&] { start = tryStart(all); });
  if (start.isOff) return report.add(Well, "SMS is switched off");
  for (const std::string& line : log) report.add(start.isGood ? Look : Ill, "the daemon logs: " + line);
  const char* const text = start.isGood ? "the daemon starts" : "the daemon does not start";
  report.add(start.isGood ? Well : Ill, std::string(text) + " with these settings");
}
}  // namespace

void reportSettings(Report& report, const Json::Value& all) {
  const Settings settings(all);
  try {
    reportTypes(report, settings);
    if (settings.isOn("smsCommands.enabled")) reportPermissions(report, settings);
    reportStart(report, all);
  } catch (const Json::Exception& exception) {
    report.add(Ill, std::string("the daemon does not start with these settings: ") + exception.what());
  }
}
