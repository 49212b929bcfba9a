#pragma once

#include "provider/ModemEvents.h"
#include "provider/SmsProvider.h"

/// Every command line of the tool starts with this text.
constexpr char smsTool[] = "SMS_CONFIG=/etc/smsconfig sms ";

constexpr char sendLog[] = "/var/log/veld.log";  ///< the file for the output of `sms send`

/// Uses the modem through the gateway's command-line tool `sms`. The shell runs the tool.
///
/// Keeps no state between calls. Logs every failure but one: the exit status of `sms list` is ignored. Throws
/// the JSON library's exception only if "recipient" or "message" is an array or an object.
class SmsUtilsProvider final : public SmsProvider {
 public:
  /// Creates the folder of the file that sendMessage writes. If this fails, logs the failure; every send then
  /// fails. Calls the functions of `events`, if given; `events` must outlive this object.
  explicit SmsUtilsProvider(ModemEvents* events = nullptr);

  /// Lists all messages in the modem, then deletes them there. "guid" and "timestamp" come from the gateway's
  /// clock, in local time. A message without a sender gives no record and is deleted, too. If the deletion
  /// fails, the next call returns the messages again.
  std::vector<Json::Value> receiveMessages() override;

  /// Writes the text to a file for the tool, and the number without quotes into the tool's command line. The
  /// shell appends the tool's output to `sendLog`. Returns false if the number is empty or missing, if the
  /// file cannot be written, or if the tool fails. Sends an empty text if "message" is missing.
  bool sendMessage(const Json::Value& message) override;

 private:
  ModemEvents* const events_;
};
