#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "simulator/clock/GatewayClock.h"

namespace Simulator {

/// The folders of the daemon's messages, one a status, as the programs beside the daemon use them.
class MessageFolders {
 public:
  static constexpr char root[] = "/var/config/sms";
  static constexpr const char* boxes[] = {"received", "sending", "sent", "failed"};

  /// Creates them where the daemon does not.
  explicit MessageFolders(const GatewayClock& clock);

  static std::string pathOf(const std::string& box);
  /// The records of a box, by name; what is no JSON as a text.
  static std::vector<Json::Value> records(const std::string& box);

  /// Hands an outgoing message to the daemon as a record. Gives its guid; empty when the disk refuses it.
  [[nodiscard]] std::string queue(const Json::Value& recipient, const std::string& text,
                                  unsigned retries) const;

 private:
  const GatewayClock& clock_;
};

}  // namespace Simulator
