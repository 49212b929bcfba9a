#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "simulator/clock/GatewayClock.h"

namespace Simulator {
/// The daemon's message folders, through which other programs of the gateway send and receive messages.
class MessageFolders {
 public:
  static constexpr char root[] = "/var/config/sms";
  static constexpr const char* names[] = {"received", "sending", "sent", "failed"};

  /// Creates the root folder, with the mode that the daemon's unit gives it.
  explicit MessageFolders(const GatewayClock& clock);

  /// Creates missing folders, as the daemon does when it starts.
  static void create();
  static std::string pathOf(const std::string& name);
  /// Returns the records in a folder, sorted by file name. A file that is not JSON becomes a JSON string.
  static std::vector<Json::Value> records(const std::string& name);

  /// Queues an outgoing message. Returns the guid of the message; an empty string if writing fails.
  [[nodiscard]] std::string queue(const Json::Value& recipient, const std::string& text,
                                  unsigned retries) const;

 private:
  std::string freeGuid() const;

  const GatewayClock& clock_;
};
}  // namespace Simulator
