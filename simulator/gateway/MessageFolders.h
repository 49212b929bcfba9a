#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "simulator/clock/GatewayClock.h"

namespace Simulator {

/// The daemon's message folders, one for each status, as other programs of the gateway use them.
class MessageFolders {
 public:
  static constexpr char root[] = "/var/config/sms";
  static constexpr const char* boxes[] = {"received", "sending", "sent", "failed"};

  /// Creates the root folder, with the mode that the daemon's unit gives it.
  explicit MessageFolders(const GatewayClock& clock);

  /// Creates missing folders, as the daemon does when it starts.
  static void create();
  static std::string pathOf(const std::string& box);
  /// Returns the records of a box, sorted by file name. A file that is not JSON becomes a string.
  static std::vector<Json::Value> records(const std::string& box);

  /// Queues an outgoing message. Returns its guid, or an empty string if the file cannot be written.
  [[nodiscard]] std::string queue(const Json::Value& recipient, const std::string& text,
                                  unsigned retries) const;

 private:
  std::string freeGuid() const;

  const GatewayClock& clock_;
};

}  // namespace Simulator
