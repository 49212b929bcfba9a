#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "standalone/sms/Deadline.h"

namespace Standalone {

/// The state that the tool keeps between calls: a text file in /run, which a reboot removes.
///
/// The object holds a lock while it lives, so that simultaneous calls do not overwrite each other's marks.
class State {
 public:
  static constexpr char standardFolder[] = "/run/veld-sms";

  /// The tool's progress with a message.
  enum class Mark : char {
    Read = 'r',     ///< list unread has listed it
    Printed = 'p',  ///< list read has printed it completely
    Doomed = 'd',   ///< delete read is deleting it, or the modem has refused to delete it
  };

  /// Creates `folder` if it is missing, waits for the lock, and reads the file. Throws a Problem if that
  /// fails, or if another call holds the lock until the deadline.
  State(std::string folder, const Deadline& deadline);
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  /// Sets the binding. Discards marks and times that belong to another one.
  void bind(const std::string& binding);

  /// Writes the file atomically. Throws a Problem when it cannot be written.
  void save() const;

  std::map<std::string, Mark> marks;  ///< by the id of a message
  std::int64_t lastFetch = 0;         ///< when the modem last fetched all messages, in upTime(); 0: unknown
  bool hasArrivals = false;           ///< messages have arrived since then
  std::string triedPin;               ///< the last PIN that the SIM has rejected
  std::string problem;                ///< the logged problem that has not ended yet

 private:
  void read();
  std::string file() const { return folder_ + "/state"; }

  std::string folder_;
  std::string binding_;
  int lock_ = -1;
};

/// Returns the seconds since the machine was booted.
std::int64_t upTime();

}  // namespace Standalone
