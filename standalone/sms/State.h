#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "standalone/sms/Deadline.h"

namespace Standalone {

/// The state that the tool keeps between calls: a text file under /run, which a reboot empties.
///
/// The object holds a lock while it lives, so that two simultaneous calls do not overwrite each other's
/// marks.
class State {
 public:
  static constexpr char standardFolder[] = "/run/veld-sms";

  /// The tool's progress with a message.
  enum class Mark : char {
    Read = 'r',     ///< list unread has listed it
    Printed = 'p',  ///< list read has printed it completely
    Doomed = 'd',   ///< delete read was asked to delete it, and the modem refused
  };

  /// Waits for the lock and reads the file in `folder`, which is created. Throws a Problem when that fails,
  /// or when another call holds the lock until the deadline.
  State(std::string folder, const Deadline& deadline);
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  /// Discards marks and times that belong to a binding other than `binding`.
  void bind(const std::string& binding);

  /// Writes the file atomically. Throws a Problem when it cannot be written.
  void save() const;

  std::map<std::string, Mark> marks;  ///< by the id of a message
  std::int64_t looked = 0;     ///< when the modem last fetched all, in seconds since the boot; 0: not known
  bool somethingCame = false;  ///< since then
  std::string triedPin;        ///< the last PIN that the SIM has rejected
  std::string problem;         ///< the logged problem that has not ended yet

 private:
  void read();
  std::string file() const { return folder_ + "/state"; }

  std::string folder_;
  std::string binding_;
  int lock_ = -1;
};

/// Seconds since the boot.
std::int64_t upTime();

}  // namespace Standalone
