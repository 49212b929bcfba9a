#pragma once

#include "provider/ModemEvents.h"
#include "provider/SmsProvider.h"

/// The start of every command line of the tool.
constexpr char smsTool[] = "SMS_CONFIG=/etc/smsconfig sms ";

constexpr char sendLog[] = "/var/log/veld.log";  ///< the output of the tool during sends

/// Drives the modem through the gateway's command-line tool `sms`, which is run by the shell.
///
/// Keeps no state between calls. A failure of the tool is logged; the call then returns an empty result or
/// false. Only a "recipient" or "message" that is an array or an object throws the JSON library's exception.
class SmsUtilsProvider final : public SmsProvider {
 public:
  /// Creates the folder of the send file. A failure is logged, and every send then fails. `events`, if given,
  /// receives the events of the modem and must outlive the object.
  explicit SmsUtilsProvider(ModemEvents* events = nullptr);

  /// Lists every message that the modem holds, then deletes them from it. "guid" and "timestamp" come from
  /// the gateway's clock, in local time. A message without a sender is dropped. If the deletion fails, the
  /// next call returns the same messages again.
  std::vector<Json::Value> receiveMessages() override;

  /// The number goes into the command line unquoted. The shell appends the tool's output to
  /// /var/log/veld.log. False for an empty or missing number, and if the text cannot be written to a file for
  /// the tool. A missing text is sent as an empty one.
  bool sendMessage(const Json::Value& message) override;

 private:
  ModemEvents* const events_;
};
