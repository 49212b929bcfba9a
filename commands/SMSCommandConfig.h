#pragma once

#include <json/json.h>

#include <string>

#include "support/NonCopyable.h"

/// Who may send commands by SMS, and which ones: the "smsCommands" object of the settings. The fields are
/// named after the keys that fill them. Until they are read, nothing is permitted and no password is
/// required.
class SMSCommandConfig : private Orvel::NonCopyable {
 public:
  virtual ~SMSCommandConfig() = default;

  /// Reads the configuration. False when "enabled", "whitelist", "password", "checkinEnabled" or
  /// "rebootEnabled" is missing, or a member of "whitelist" or "password"; the fault is logged, and values
  /// read before it are kept. A missing flag of a command is false. A value of the wrong type throws the JSON
  /// library's exception.
  bool setConfig(const Json::Value& config);

  /// The flag of a command; false for SMSCMD_UNKNOWN and for any number that is not an SMSCMD. Does not
  /// consider `enabled`.
  bool isCommandEnabled(int command) const;

  Json::Value config;             ///< the object last given to setConfig
  bool whitelistEnabled = false;  ///< only `numbers` may send commands
  Json::Value numbers;            ///< array of strings or integers, unchanged
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
  bool enabled = false;  ///< commands are accepted at all
};
