#include "commands/SMSCommandConfig.h"

#include "commands/SMSCMD.h"
#include "support/Logger.h"

namespace {

struct CommandFlag {
  SMSCMD command;
  const char* key;
  bool SMSCommandConfig::*flag;
};

constexpr CommandFlag commandFlags[] = {
    {SMSCMD_CHECKIN, "checkinEnabled", &SMSCommandConfig::checkinEnabled},
    {SMSCMD_REBOOT, "rebootEnabled", &SMSCommandConfig::rebootEnabled},
    {SMSCMD_RM, "rmEnabled", &SMSCommandConfig::rmEnabled},
    {SMSCMD_SETCELLULAR, "setCellularEnabled", &SMSCommandConfig::setCellularEnabled},
    {SMSCMD_APN, "apnEnabled", &SMSCommandConfig::apnEnabled},
    {SMSCMD_CELLULARSTATUS, "cellularStatusEnabled", &SMSCommandConfig::cellularStatusEnabled},
    {SMSCMD_RADIO, "radioEnabled", &SMSCommandConfig::radioEnabled},
    {SMSCMD_ETHERNET, "ethernetEnabled", &SMSCommandConfig::ethernetEnabled},
    {SMSCMD_WAN, "wanStatusEnabled", &SMSCommandConfig::wanStatusEnabled},
    {SMSCMD_WANIPS, "wanIpsEnabled", &SMSCommandConfig::wanIpsEnabled},
    {SMSCMD_WIFI, "wifiEnabled", &SMSCommandConfig::wifiEnabled},
    {SMSCMD_PING, "pingEnabled", &SMSCommandConfig::pingEnabled},
    {SMSCMD_SERIAL, "serialEnabled", &SMSCommandConfig::serialEnabled},
    {SMSCMD_GEOPOSITION, "geopositionEnabled", &SMSCommandConfig::geopositionEnabled},
    {SMSCMD_LNSRESTART, "lnsRestartEnabled", &SMSCommandConfig::lnsRestartEnabled},
};

}  // namespace

bool SMSCommandConfig::setConfig(const Json::Value& newConfig) {
  config = newConfig;
  for (const char* const key : {"enabled", "whitelist", "password", "checkinEnabled", "rebootEnabled"}) {
    if (newConfig.isMember(key)) continue;
    ORVEL_LOG(ERROR, "SMSCommandConfig::setConfig: Unable to parse SMS Commands configuration");
    return false;
  }
  enabled = newConfig["enabled"].asBool();
  for (const CommandFlag& row : commandFlags) this->*row.flag = newConfig[row.key].asBool();

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
  for (const CommandFlag& row : commandFlags)
    if (row.command == command) return this->*row.flag;
  return false;
}
