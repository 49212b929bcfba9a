#pragma once

#include <json/json.h>

#include <array>
#include <string>
#include <vector>

#include "commands/SMSCMD.h"
#include "commands/SMSCommandConfig.h"
#include "commands/SMSCommandExecutor.h"
#include "support/NonCopyable.h"

/// The parsed text of a command SMS.
struct ParsedSMSCommand {
  std::string password;  ///< empty when the text has none
  SMSCMD id = SMSCMD_UNKNOWN;
  std::vector<std::string> args;  ///< the words after the command word
};

/// A row of the command table.
struct SMSCommandEntry {
  std::string keyword;  ///< lower case, without "#"
  SMSCMD id;
  SMSCommandExecutor* executor;  ///< one of the SMSCommand's own
};

/// Turns the text of a received SMS into a request to the local API.
///
///     [p PASSWORD] #KEYWORD [ARGUMENT...]
///
/// The words are separated by single spaces; "p" and the keyword may be in either case. A function that
/// refuses a message returns false and logs one line. No state is kept between messages.
class SMSCommand : private Orvel::NonCopyable {
 public:
  /// Keeps a copy of `config`, the "smsCommands" object of the settings, for loadConfig.
  explicit SMSCommand(const Json::Value& config);
  virtual ~SMSCommand() = default;

  /// Reads the configuration; results and exceptions are those of SMSCommandConfig::setConfig.
  bool loadConfig();

  /// Whether commands are accepted at all.
  bool isEnabled() const;

  /// Fills `command` from `message`; false if it is not a known command; `command` is then partly filled. The
  /// password is logged at INFO.
  bool parseCommand(const std::string& message, ParsedSMSCommand& command) const;

  /// Whether `password` equals the configured one, byte for byte.
  bool passwordGood(const std::string& password) const;

  /// Whether `phoneNumber` is on the whitelist, byte for byte: no prefix is added or removed. Throws the JSON
  /// library's exception for an entry that has no text form.
  bool whiteListGood(const std::string& phoneNumber) const;

  /// Whether `phoneNumber` may send the command that `message` holds. Does not check the flag
  /// of the command.
  bool validateSMSCommand(const std::string& message, const std::string& phoneNumber) const;

  /// Posts the command, with `phoneNumber` as the recipient of the answer, if its flag permits it. True once
  /// it is posted, whatever the API answers. Call it only after validateSMSCommand: it checks only the flag.
  bool executeCommand(const std::string& message, const std::string& phoneNumber);

 private:
  const Json::Value configJson_;
  std::array<SMSCommandExecutor, SMSCMD_COUNT> executors_;
  SMSCommandConfig config_;
  const std::vector<SMSCommandEntry> commandTable_;
};
