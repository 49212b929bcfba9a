#pragma once

#include <json/value.h>

#include <mutex>
#include <string>

namespace Simulator {

/// The SMS settings and the back-off timers, which the daemon reads when it starts. Safe for several threads.
class Settings {
 public:
  static constexpr char timersFile[] = "/var/run/config/backofftimers_config";

  /// Permits every command to the number +4917012345 with the password "secret".
  Settings();

  Json::Value value() const;
  /// Sets or removes a member such as "smsCommands.pingEnabled". False if it is unknown, or its object was
  /// removed.
  bool set(const std::string& path, const Json::Value& value);
  bool remove(const std::string& path);

  /// Replaces the timers file; `timings` are seconds, such as "[30,60]". False on failure.
  static bool setTimings(const std::string& timings);

 private:
  mutable std::mutex mutex_;
  Json::Value value_;
};

}  // namespace Simulator
