#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "standalone/sms/Deadline.h"

namespace Standalone {

/// What the tool knows from one call to the next: a file of lines under /run, which a reboot empties.
///
/// A call holds a lock for as long as the object lives, so that two calls at a time do
/// not undo each other's marks.
class State {
 public:
  static constexpr char standardFolder[] = "/run/veld-sms";

  /// What has been done with a message.
  enum class Mark : char {
    Read = 'r',     ///< list unread has shown it
    Printed = 'p',  ///< list read has printed it whole
    Doomed = 'd',   ///< delete read was asked to delete it, and the modem refused
  };

  /// Waits for the lock and reads the file in `folder`, which is created. Throws a Problem when that fails,
  /// or when another call holds the lock until the deadline.
  State(std::string folder, const Deadline& deadline);
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  /// Forgets the marks and times of another binding than `binding`.
  void bind(const std::string& binding);

  /// Writes the file, whole or not at all. Throws a Problem when it cannot be written.
  void save() const;

  std::map<std::string, Mark> marks;  ///< by the id of a message
  std::int64_t looked = 0;     ///< when the modem last fetched all, in seconds since the boot; 0: not known
  bool somethingCame = false;  ///< since then
  std::string triedPin;        ///< the PIN that the SIM was given and has not accepted
  std::string problem;         ///< that the log has told of, and not yet its end

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
