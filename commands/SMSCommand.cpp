#include "commands/SMSCommand.h"

#include "daemon/LocalApi.h"
#include "support/Logger.h"
#include "support/Text.h"

namespace {

constexpr char identifierNames[][50] = {
    "SMSCMD_UNKNOWN",     "SMSCMD_CHECKIN",     "SMSCMD_REBOOT",         "SMSCMD_RM",
    "SMSCMD_SETCELLULAR", "SMSCMD_APN",         "SMSCMD_CELLULARSTATUS", "SMSCMD_RADIO",
    "SMSCMD_ETHERNET",    "SMSCMD_WAN",         "SMSCMD_WIFI",           "SMSCMD_PING",
    "SMSCMD_SERIAL",      "SMSCMD_GEOPOSITION", "SMSCMD_LNSRESTART",     "SMSCMD_WANIPS",
};

// The executors by their place.
enum Endpoint : std::size_t {
  SmsRestart,
  Checkin,
  SetRm,
  SetCellular,
  Apn,
  CellularStatus,
  RadioStatus,
  EthernetStatus,
  WanStatus,
  WifiStatus,
  Ping,
  SerialStatus,
  Geoposition,
  LnsRestart,
  SmsSend,  // no keyword leads here
  WanIps,
};

std::string url(const char* command) { return std::string(localApiHost) + "/api/command/" + command; }

// Cuts the command word "#KEYWORD" to its lowered keyword; empty for a word without "#".
std::string keywordOf(const std::string& word) {
  return !word.empty() && word[0] == '#' ? Orvel::Text::toLowerCase(word.substr(1)) : "";
}

// Takes the password and the command word off the front of `command.args`. False when there is none.
bool takeCommandWord(ParsedSMSCommand& command, std::string& keyword) {
  std::vector<std::string>& words = command.args;
  std::size_t commandWord = 0;
  if ((words[0] == "p" || words[0] == "P") && words.size() > 1) {
    command.password = words[1];
    commandWord = 2;
    if (words.size() == 2) {
      ORVEL_LOG(ERROR, "SMSCommand::parseCommand: failed to find a command in SMS message");
      return false;
    }
  } else if (words[0][0] != '#') {
    ORVEL_LOG(ERROR, "SMSCommand::parseCommand: failed to find password or command");
    return false;
  }
  keyword = keywordOf(words[commandWord]);
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(commandWord) + 1);
  return true;
}

}  // namespace

SMSCommand::SMSCommand(const Json::Value& config)
    : configJson(config),
      executors{{
          SMSCommandExecutor(url("sms_restart")),
          SMSCommandExecutor(url("checkin_to_quillo_sms")),
          SMSCommandExecutor(url("set_rm_through_sms")),
          SMSCommandExecutor(url("set_cellular_through_sms")),
          SMSCommandExecutor(url("send_apn_through_sms")),
          SMSCommandExecutor(url("send_cellularstatus_sms")),
          SMSCommandExecutor(url("send_radiostatus_sms")),
          SMSCommandExecutor(url("send_ethernetstatus_sms")),
          SMSCommandExecutor(url("send_wanstatus_sms")),
          SMSCommandExecutor(url("send_wifistatus_sms")),
          SMSCommandExecutor(url("do_ping_through_sms")),
          SMSCommandExecutor(url("send_serialstatus_sms")),
          SMSCommandExecutor(url("send_geoposition_sms")),
          SMSCommandExecutor(url("lns_restart_sms")),
          SMSCommandExecutor(url("sms_send")),
          SMSCommandExecutor(url("send_wanips_sms")),
      }},
      commandTable{
          {"checkin", SMSCMD_CHECKIN, &executors[Checkin]},
          {"reboot", SMSCMD_REBOOT, &executors[SmsRestart]},
          {"rm", SMSCMD_RM, &executors[SetRm]},
          {"setcellular", SMSCMD_SETCELLULAR, &executors[SetCellular]},
          {"apn", SMSCMD_APN, &executors[Apn]},
          {"cellular", SMSCMD_CELLULARSTATUS, &executors[CellularStatus]},
          {"radio", SMSCMD_RADIO, &executors[RadioStatus]},
          {"ethernet", SMSCMD_ETHERNET, &executors[EthernetStatus]},
          {"wan", SMSCMD_WAN, &executors[WanStatus]},
          {"wifi", SMSCMD_WIFI, &executors[WifiStatus]},
          {"ping", SMSCMD_PING, &executors[Ping]},
          {"serial", SMSCMD_SERIAL, &executors[SerialStatus]},
          {"geoposition", SMSCMD_GEOPOSITION, &executors[Geoposition]},
          {"wanips", SMSCMD_WANIPS, &executors[WanIps]},
          {"lnsrestart", SMSCMD_LNSRESTART, &executors[LnsRestart]},
      } {}

bool SMSCommand::loadConfig() { return config.setConfig(configJson); }

bool SMSCommand::isEnabled() const { return config.enabled; }

bool SMSCommand::parseCommand(const std::string& message, ParsedSMSCommand& command) const {
  const std::size_t begin = message.find_first_not_of(" \t");
  if (begin == std::string::npos) {
    ORVEL_LOG(ERROR, "SMSCommand::parseCommand: strBegin == std::string:npos, no content in SMS command");
    return false;
  }
  const std::string text = message.substr(begin, message.find_last_not_of(" \t") - begin + 1);
  ORVEL_LOG(INFO, "SMSCommand::parseCommand message = [%s]", text.c_str());

  command.args = Orvel::Text::split(text, " ", static_cast<int>(text.size()));
  std::string keyword;
  if (!takeCommandWord(command, keyword)) return false;
  command.id = SMSCMD_UNKNOWN;
  for (const SMSCommandEntry& entry : commandTable) {
    if (entry.keyword != keyword) continue;
    command.id = entry.id;
    break;
  }

  ORVEL_LOG(INFO, "SMSCommand::parseCommand: cmd [%s] pass[%s] argc[%d] argv[", identifierNames[command.id],
            command.password.c_str(), static_cast<int>(command.args.size()));
  for (const std::string& arg : command.args) ORVEL_LOG(INFO, "             %s", arg.c_str());
  ORVEL_LOG(INFO, "SMSCommand::parseCommand: ]args");
  if (command.id != SMSCMD_UNKNOWN) return true;
  ORVEL_LOG(ERROR, "SMSCommand::parseCommand: Invalid command string [%s]", keyword.c_str());
  return false;
}

bool SMSCommand::passwordGood(const std::string& password) const {
  if (password == config.password) return true;
  ORVEL_LOG(ERROR, "SMSCommand::passwordGood password did not match");
  return false;
}

bool SMSCommand::whiteListGood(const std::string& phoneNumber) const {
  for (Json::ArrayIndex i = 0; i < config.numbers.size(); ++i)
    if (config.numbers[i].asString() == phoneNumber) return true;
  ORVEL_LOG(ERROR, "SMSCommand::whiteListGood phone number not in white list");
  return false;
}

bool SMSCommand::validateSMSCommand(const std::string& message, const std::string& phoneNumber) const {
  if (!config.enabled) {
    ORVEL_LOG(ERROR, "SMSCommand::validateSMSCommand: SMS Commands are disabled");
    return false;
  }
  if (config.whitelistEnabled && !whiteListGood(phoneNumber)) return false;
  ParsedSMSCommand command;
  if (!parseCommand(message, command)) return false;
  if (config.passwordEnabled && !passwordGood(command.password)) return false;
  ORVEL_LOG(INFO, "SMSCommand::validateSMSCommand validation of command succeeded.");
  return true;
}

bool SMSCommand::executeCommand(const std::string& message, const std::string& phoneNumber) {
  ORVEL_LOG(INFO, "SMSCommand::executeCommand cmd:%s, phoneNumber:%s", message.c_str(), phoneNumber.c_str());
  ParsedSMSCommand command;
  if (!parseCommand(message, command)) return false;
  bool executed = false;
  for (const SMSCommandEntry& entry : commandTable) {
    if (entry.id != command.id || !config.isCommandEnabled(entry.id)) continue;
    entry.executor->execute(phoneNumber, command.args);
    executed = true;
  }
  if (!executed)
    ORVEL_LOG(ERROR, "SMSCommand::executeCommand Bad command, either not enabled, or command was invalid");
  return executed;
}
