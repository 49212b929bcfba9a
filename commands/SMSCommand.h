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
  std::string password;  ///< empty if the text has no password
  SMSCMD id = SMSCMD_UNKNOWN;
  std::vector<std::string> args;  ///< the words after the command word
};

/// A command that SMSCommand recognises.
struct SMSCommandEntry {
  std::string keyword;  ///< lower case, without "#"
  SMSCMD id;
  SMSCommandExecutor* executor;  ///< belongs to the SMSCommand
};

/// Turns the text of a received SMS into a request to the local API. The text has this form:
///
///     [p PASSWORD] #KEYWORD [ARGUMENT...]
///
/// The words are separated by single spaces. "p" and the keyword may be in either case. A function that
/// refuses a message returns false and logs the reason. Keeps no state between messages.
class SMSCommand : private Orvel::NonCopyable {
 public:
  /// Keeps a copy of `config`, the "smsCommands" object of the settings, for loadConfig.
  explicit SMSCommand(const Json::Value& config);
  virtual ~SMSCommand() = default;

  /// Reads the configuration. Returns and throws what SMSCommandConfig::setConfig returns and throws.
  bool loadConfig();

  /// Returns true if the settings permit SMS commands.
  bool isEnabled() const;

  /// Parses `message` into `command`. Returns false if `message` does not contain a known command; `command`
  /// may then be partly filled. Logs the password at INFO.
  bool parseCommand(const std::string& message, ParsedSMSCommand& command) const;

  /// Returns true if `password` equals the configured password, byte for byte.
  bool passwordGood(const std::string& password) const;

  /// Returns true if `phoneNumber` equals an entry of the whitelist, byte for byte, including any prefix.
  /// Throws the JSON library's exception for an entry that cannot be converted to text.
  bool whiteListGood(const std::string& phoneNumber) const;

  /// Returns true if `phoneNumber` may send the command in `message`. Checks the whitelist, the text and the
  /// password, but not the flag of the command.
  bool validateSMSCommand(const std::string& message, const std::string& phoneNumber) const;

  /// Posts the command if its flag permits it, with `phoneNumber` as the recipient of the answer. Returns
  /// true after the request, even if it fails. Checks only the flag: call validateSMSCommand first.
  bool executeCommand(const std::string& message, const std::string& phoneNumber);

 private:
  const Json::Value configJson_;
  std::array<SMSCommandExecutor, SMSCMD_COUNT> executors_;
  SMSCommandConfig config_;
  const std::vector<SMSCommandEntry> commandTable_;
};
