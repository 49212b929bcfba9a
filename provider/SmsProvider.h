#pragma once

#include <json/json.h>

#include <vector>

/// The modem as the daemon's loop sees it.
class SmsProvider {
 public:
  /// Fetches the modem's messages and deletes them from the modem. Returns message records, complete or with
  /// "parts" (see MultipartJoiner.h); empty if there are none or the modem cannot be asked.
  virtual std::vector<Json::Value> receiveMessages() = 0;

  /// Sends the text "message" to the number "recipient" and blocks until the modem has answered. True if it
  /// was sent.
  virtual bool sendMessage(const Json::Value& message) = 0;

  virtual ~SmsProvider() = default;
};
