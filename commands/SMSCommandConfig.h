#pragma once

#include <json/json.h>

#include <string>

#include "support/NonCopyable.h"

/// The "smsCommands" object of the settings: who may send commands by SMS, and which commands. The flag
/// of a command has the same name as its key. Before setConfig, no command is permitted and no password is
/// required.
class SMSCommandConfig : private Orvel::NonCopyable {
 public:
  virtual ~SMSCommandConfig() = default;

  /// Reads the configuration. Returns false if "enabled", "whitelist", "password", "checkinEnabled" or
  /// "rebootEnabled" is missing, or if a member of "whitelist" or "password" is missing. Then logs the error
  /// and keeps the values that were read before. Any other missing flag of a command is false. Throws the
  /// JSON library's exception for a value of the wrong type.
  bool setConfig(const Json::Value& config);

  /// Returns the flag of a command; false for SMSCMD_UNKNOWN and for a number that is not an SMSCMD. Ignores
  /// `enabled`.
  bool isCommandEnabled(int command) const;

  Json::Value config;             ///< the argument of the last setConfig
  bool whitelistEnabled = false;  ///< only `numbers` may send commands
  Json::Value numbers;            ///< the whitelist: an array of strings or integers
  bool passwordEnabled = false;   ///< a command must carry the password
  std::string password;           ///< never logged by this class
  bool checkinEnabled = false;
  bool rebootEnabled = false;
  bool rmEnabled = false;
  bool setCellularEnabled = false;
  bool apnEnabled = false;
  bool cellularStatusEnabled = false;
  bool radioEnabled = false;
  bool ethernetEnabled = false;
  bool wanStatusEnabled = false;
  bool wifiEnabled = false;
  bool pingEnabled = false;
  bool serialEnabled = false;
  bool geopositionEnabled = false;
  bool lnsRestartEnabled = false;
  bool wanIpsEnabled = false;
  bool enabled = false;  ///< the daemon accepts commands
};
