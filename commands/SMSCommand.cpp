#include "commands/SMSCommand.h"

#include <utility>

#include "commands/CommandTable.h"
#include "daemon/LocalApi.h"
#include "support/Logger.h"
#include "support/Text.h"

namespace {
const char* nameOf(SMSCMD id) {
  for (const CommandRow& row : commandRows)
    if (row.id == id) return row.name;
  return "";
}

SMSCommandExecutor makeExecutor(std::size_t place) {
  const char* path = "";
  for (const CommandRow& row : commandRows)
    if (row.executor == place) path = row.path;
  return SMSCommandExecutor(std::string(localApiHost) + "/api/command/" + path);
}

template <std::size_t... place>
std::array<SMSCommandExecutor, sizeof...(place)> makeExecutors(std::index_sequence<place...> /*places*/) {
  return {{makeExecutor(place)...}};
}

template <std::size_t size>
std::vector<SMSCommandEntry> makeCommandTable(std::array<SMSCommandExecutor, size>& executors) {
  std::vector<SMSCommandEntry> table;
  for (const CommandRow& row : commandRows)
    if (row.keyword != nullptr) table.push_back({row.keyword, row.id, &executors[row.executor]});
  return table;
}

// Returns KEYWORD of the word "#KEYWORD", in lower case; empty for a word without "#".
std::string keywordOf(const std::string& word) {
  return !word.empty() && word[0] == '#' ? Orvel::Text::toLowerCase(word.substr(1)) : "";
}

// Moves the password and the keyword from the front of `command.args` to `command.password` and `keyword`.
// Returns false if there is no command word.
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
    : configJson_(config),
      executors_(makeExecutors(std::make_index_sequence<SMSCMD_COUNT>())),
      commandTable_(makeCommandTable(executors_)) {}

bool SMSCommand::loadConfig() { return config_.setConfig(configJson_); }

bool SMSCommand::isEnabled() const { return config_.enabled; }

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
  for (const SMSCommandEntry& entry : commandTable_) {
    if (entry.keyword != keyword) continue;
    command.id = entry.id;
    break;
  }

  ORVEL_LOG(INFO, "SMSCommand::parseCommand: cmd [%s] pass[%s] argc[%d] argv[", nameOf(command.id),
            command.password.c_str(), static_cast<int>(command.args.size()));
  for (const std::string& arg : command.args) ORVEL_LOG(INFO, "             %s", arg.c_str());
  ORVEL_LOG(INFO, "SMSCommand::parseCommand: ]args");
  if (command.id != SMSCMD_UNKNOWN) return true;
  ORVEL_LOG(ERROR, "SMSCommand::parseCommand: Invalid command string [%s]", keyword.c_str());
  return false;
}

bool SMSCommand::passwordGood(const std::string& password) const {
  if (password == config_.password) return true;
  ORVEL_LOG(ERROR, "SMSCommand::passwordGood password did not match");
  return false;
}

bool SMSCommand::whiteListGood(const std::string& phoneNumber) const {
  for (Json::ArrayIndex i = 0; i < config_.numbers.size(); ++i)
    if (config_.numbers[i].asString() == phoneNumber) return true;
  ORVEL_LOG(ERROR, "SMSCommand::whiteListGood phone number not in white list");
  return false;
}

bool SMSCommand::validateSMSCommand(const std::string& message, const std::string& phoneNumber) const {
  if (!config_.enabled) {
    ORVEL_LOG(ERROR, "SMSCommand::validateSMSCommand: SMS Commands are disabled");
    return false;
  }
  if (config_.whitelistEnabled && !whiteListGood(phoneNumber)) return false;
  ParsedSMSCommand command;
  if (!parseCommand(message, command)) return false;
  if (config_.passwordEnabled && !passwordGood(command.password)) return false;
  ORVEL_LOG(INFO, "SMSCommand::validateSMSCommand validation of command succeeded.");
  return true;
}

bool SMSCommand::executeCommand(const std::string& message, const std::string& phoneNumber) {
  ORVEL_LOG(INFO, "SMSCommand::executeCommand cmd:%s, phoneNumber:%s", message.c_str(), phoneNumber.c_str());
  ParsedSMSCommand command;
  if (!parseCommand(message, command)) return false;
  bool executed = false;
  for (const SMSCommandEntry& entry : commandTable_) {
    if (entry.id != command.id || !config_.isCommandEnabled(entry.id)) continue;
    entry.executor->execute(phoneNumber, command.args);
    executed = true;
  }
  if (!executed)
    ORVEL_LOG(ERROR, "SMSCommand::executeCommand Bad command, either not enabled, or command was invalid");
  return executed;
}
