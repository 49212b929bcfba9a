#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "standalone/sms/Deadline.h"

namespace Standalone {
/// The state that the tool keeps between calls, in a text file. The file is in /run, so a reboot removes it.
/// While the object exists it holds a lock, so that simultaneous calls do not overwrite each other's marks.
class State {
 public:
  static constexpr char standardFolder[] = "/run/veld-sms";

  /// What the tool has done with a message.
  enum class Mark : char {
    Read = 'r',      ///< `list unread` has listed the message
    Printed = 'p',   ///< `list read` has printed the whole message
    ToDelete = 'd',  ///< `delete read` is deleting the message, or the modem has refused to delete it
  };

  /// Creates `folder` if it is missing, waits for the lock, and reads the file. Throws a Problem if one of
  /// these steps fails, or if another call holds the lock until the deadline.
  State(std::string folder, const Deadline& deadline);
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  /// Sets the binding, see Modem. Discards marks and times if the binding has changed.
  void bind(const std::string& binding);

  /// Writes the file atomically. Throws a Problem if it cannot be written.
  void save() const;

  std::map<std::string, Mark> marks;  ///< by the id of a message
  std::int64_t lastFetch = 0;         ///< when the modem last fetched all messages, in upTime(); 0: unknown
  bool hasArrivals = false;           ///< true if messages have arrived since the last fetch
  std::string triedPin;               ///< the last PIN that the SIM has rejected
  std::string problem;                ///< the last logged problem; empty after it has ended

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
