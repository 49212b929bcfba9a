#pragma once

#include <json/value.h>

#include <mutex>
#include <string>

namespace Simulator {
/// The SMS settings and the back-off timers, which the daemon reads when it starts. The class is thread-safe.
class Settings {
 public:
  static constexpr char timersFile[] = "/var/run/config/backofftimers_config";

  /// At first, the number +4917012345 may send every command with the password "secret".
  Settings();

  Json::Value value() const;
  /// Sets a member such as "smsCommands.pingEnabled". Returns false if the member, or the object that should
  /// contain it, does not exist.
  bool set(const std::string& path, const Json::Value& value);
  bool remove(const std::string& path);  ///< removes a member; returns false if it does not exist

  /// Replaces the timers file. `timings` is a list of seconds such as "[30,60]". Returns false on failure.
  static bool setTimings(const std::string& timings);

 private:
  mutable std::mutex mutex_;
  Json::Value value_;
};
}  // namespace Simulator
