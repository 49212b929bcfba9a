#pragma once

#include "provider/ModemEvents.h"
#include "provider/SmsProvider.h"

/// How the tool is called; a command of it follows.
constexpr char smsTool[] = "SMS_CONFIG=/etc/smsconfig sms ";

constexpr char sendLog[] = "/var/log/veld.log";  ///< what the tool has said while it sent

/// Drives the modem through the gateway's command-line tool `sms`, which is run by the shell.
///
/// Keeps nothing between calls. Failures of the tool are logged and end in an empty result or false; only a
/// record of the wrong shape (a "recipient" or "message" that is an array or an object) throws the JSON
/// library's exception.
class SmsUtilsProvider final : public SmsProvider {
 public:
  /// Creates the folder of the send file. A failure is logged, and every send will then fail. `events`, if
  /// any, is told what the modem is about to do; it outlives the object.
  explicit SmsUtilsProvider(ModemEvents* events = nullptr);

  /// Lists every message that the modem holds, then deletes them from it. "guid" and "timestamp" come from
  /// the gateway's clock, in local time. A message without a sender is dropped and deleted; when the deletion
  /// fails, the same messages come again with the next call.
  std::vector<Json::Value> receiveMessages() override;

  /// The number goes into the command line as it is. The tool's output is appended to /var/log/veld.log by
  /// the shell. A number that is empty or missing fails; a missing text is sent as an empty one, and one
  /// that cannot be written whole for the tool is not sent.
  bool sendMessage(const Json::Value& message) override;

 private:
  ModemEvents* const events_;
};
