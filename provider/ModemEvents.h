#pragma once

#include <json/json.h>

#include <string>
#include <vector>

/// The events that a provider announces. The receiver can save messages before the modem takes a step that
/// cannot be undone.
class ModemEvents {
 public:
  /// Whether a received message has this guid already. A new message then gets another guid.
  [[nodiscard]] virtual bool isTaken(const std::string& guid) const = 0;

  /// The modem is about to delete its only copy of `records`.
  virtual void aboutToDelete(const std::vector<Json::Value>& records) = 0;

  /// The modem is about to send the message that sendMessage was given.
  virtual void aboutToSend() = 0;

  /// The modem has sent that message, or has failed to.
  virtual void answered(bool sent) = 0;

 protected:
  ~ModemEvents() = default;
};
