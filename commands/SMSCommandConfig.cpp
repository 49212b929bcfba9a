#include "commands/SMSCommandConfig.h"

#include "commands/CommandTable.h"
#include "support/Logger.h"

bool SMSCommandConfig::setConfig(const Json::Value& newConfig) {
  config = newConfig;
  for (const char* const key : {"enabled", "whitelist", "password", "checkinEnabled", "rebootEnabled"}) {
    if (newConfig.isMember(key)) continue;
    ORVEL_LOG(ERROR, "SMSCommandConfig::setConfig: Unable to parse SMS Commands configuration");
    return false;
  }
  enabled = newConfig["enabled"].asBool();
  for (const CommandRow& row : commandRows)
    if (row.flag != nullptr) this->*row.flag = newConfig[row.key].asBool();

  const Json::Value& whitelist = newConfig["whitelist"];
  if (!whitelist.isMember("enabled") || !whitelist.isMember("numbers")) {
    ORVEL_LOG(ERROR, "SMSCommandConfig::setConfig: Whitelist enable or numbers setting missing");
    return false;
  }
  whitelistEnabled = whitelist["enabled"].asBool();
  numbers = whitelist["numbers"];

  const Json::Value& passwordSetting = newConfig["password"];
  if (!passwordSetting.isMember("enabled") || !passwordSetting.isMember("text")) {
    ORVEL_LOG(ERROR, "SMSCommandConfig::setConfig: Password enable or text setting missing");
    return false;
  }
  passwordEnabled = passwordSetting["enabled"].asBool();
  password = passwordSetting["text"].asString();
  return true;
}

bool SMSCommandConfig::isCommandEnabled(int command) const {
  for (const CommandRow& row : commandRows)
    if (row.id == command && row.flag != nullptr) return this->*row.flag;
  return false;
}
