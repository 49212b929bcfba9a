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
  const bool isWhole =
      hasAll(settings, {"enabled", "whitelist", "password", "checkinEnabled", "rebootEnabled"}) &&
      hasAll(settings["whitelist"], {"enabled", "numbers"}) &&
      hasAll(settings["password"], {"enabled", "text"});
  SMSCommandConfig config;
  property(config.setConfig(settings) == isWhole,
           "a configuration is accepted exactly if no required member is missing");
  property(!config.isCommandEnabled(0) && !config.isCommandEnabled(SMSCMD_COUNT),
           "an identifier without a command is off");
  if (!isWhole) return;
  property(config.enabled == settings["enabled"].asBool(),
           "the switch of all commands is the configured one");
  for (const CommandRow& row : commandRows)
    if (row.key != nullptr)
      property(config.isCommandEnabled(row.id) == settings.get(row.key, false).asBool(),
               "a missing flag is off");
  property(config.passwordEnabled == settings["password"]["enabled"].asBool(),
           "the password's switch is the configured one");
  property(config.password == settings["password"]["text"].asString(), "the password is the configured one");
  property(config.whitelistEnabled == settings["whitelist"]["enabled"].asBool(),
           "the whitelist's switch is the configured one");

  SMSCommand commands(settings);
  property(commands.loadConfig(), "a command accepts the configurations that SMSCommandConfig accepts");
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
  const bool isWhole = hasAll(settings, {"enabled", "sentLimit", "receivedLimit", "smsCommands"});
  property(!status == (isWhole && enabled == Json::Value(true)),
           "the daemon runs exactly if SMS is on and no required member is missing");
  if (status) return 0;
  try {
    for (const char* const key : {"receivedLimit", "sentLimit"}) settings[key].asUInt();
    checkConfig(settings["smsCommands"]);
  } catch (const Json::Exception&) {
    return 0;  // a value of the wrong type ends the start with the JSON library's exception
  }
  return 0;
}
