#pragma once

#include <json/json.h>

#include <string>
#include <vector>

/// What a provider announces, so that whoever keeps messages safe can act before the modem does what cannot
/// be undone.
class ModemEvents {
 public:
  /// Whether a received message of that guid exists already: a new one then gets another.
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
