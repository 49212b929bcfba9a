#pragma once

#include <json/json.h>

#include <vector>

/// The interface through which the daemon's loop uses the modem.
class SmsProvider {
 public:
  /// Fetches all messages of the modem and deletes them there. Returns their records. The record of a message
  /// with missing parts has "parts" (see MultipartJoiner.h). Returns no record if the modem cannot be read.
  virtual std::vector<Json::Value> receiveMessages() = 0;

  /// Sends the text in "message" to the number in "recipient". Blocks until the modem has answered. Returns
  /// true if the modem sent the message.
  virtual bool sendMessage(const Json::Value& message) = 0;

  virtual ~SmsProvider() = default;
};
