// The input is the settings object of the local API, as JSON text.

#include <cstdint>
#include <string>

#include "commands/CommandTable.h"
#include "commands/SMSCommand.h"
#include "daemon/LocalApi.h"
#include "daemon/StartUp.h"
#include "fuzz/shared/Property.h"

namespace {
bool hasAll(const Json::Value& object, std::initializer_list<const char*> keys) {
  for (const char* const key : keys)
    if (!object.isMember(key)) return false;
  return true;
}

void checkConfig(const Json::Value& settings) {
  const bool isComplete =
      hasAll(settings, {"enabled", "whitelist", "password", "checkinEnabled", "rebootEnabled"}) &&
      hasAll(settings["whitelist"], {"enabled", "numbers"}) &&
      hasAll(settings["password"], {"enabled", "text"});
  SMSCommandConfig config;
  property(config.setConfig(settings) == isComplete,
           "a configuration is accepted if and only if it has all required members");
  property(!config.isCommandEnabled(0) && !config.isCommandEnabled(SMSCMD_COUNT),
           "a command that does not exist is off");
  if (!isComplete) return;
  property(config.enabled == settings["enabled"].asBool(),
           "the switch of all commands has the configured value");
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr)
      property(config.isCommandEnabled(row.id) == settings.get(row.key, false).asBool(),
               "a flag has the configured value, and a missing flag is off");
  property(config.passwordEnabled == settings["password"]["enabled"].asBool(),
           "the switch of the password has the configured value");
  property(config.password == settings["password"]["text"].asString(), "the password is as configured");
  property(config.whitelistEnabled == settings["whitelist"]["enabled"].asBool(),
           "the switch of the whitelist has the configured value");

  SMSCommand commands(settings);
  property(commands.loadConfig(), "SMSCommand accepts the configurations that SMSCommandConfig accepts");
  const bool permitsNobody = config.whitelistEnabled && config.numbers.empty();
  if (permitsNobody)
    property(!commands.validateSMSCommand("#checkin", "1"), "an empty whitelist permits nobody");
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Json::Value settings;
  if (!parseJson(std::string(data, data + size), &settings) || !settings.isObject()) return 0;
  const std::optional<int> status = checkSettings(settings);
  const Json::Value enabled = settings.get("enabled", Json::nullValue);
  property((status == 0) == (enabled == Json::Value(false)), "only the boolean false switches SMS off");
  const bool isComplete = hasAll(settings, {"enabled", "sentLimit", "receivedLimit", "smsCommands"});
  property(!status == (isComplete && enabled == Json::Value(true)),
           "the daemon runs if and only if SMS is on and all required members exist");
  if (status) return 0;
  try {
    for (const char* const key : {"receivedLimit", "sentLimit"}) settings[key].asUInt();
    checkConfig(settings["smsCommands"]);
  } catch (const Json::Exception&) {
    return 0;  // the JSON library throws at a value of the wrong type, and the daemon does not start
  }
  return 0;
}
