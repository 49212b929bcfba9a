#pragma once

#include <json/json.h>

#include <string>
#include <vector>

/// The callbacks of a provider. Before each step of the modem that cannot be undone, a callback can save the
/// messages.
class ModemEvents {
 public:
  /// Returns true if a received message already has this guid. The new message then gets another guid.
  [[nodiscard]] virtual bool isTaken(const std::string& guid) const = 0;

  /// The modem is about to delete its only copy of `records`.
  virtual void aboutToDelete(const std::vector<Json::Value>& records) = 0;

  /// The modem is about to send the message of the current call of sendMessage.
  virtual void aboutToSend() = 0;

  /// The attempt has ended: the modem has sent the message, or, if `sent` is false, has failed to send it.
  virtual void answered(bool sent) = 0;

 protected:
  ~ModemEvents() = default;
};
