#pragma once

#include <iosfwd>
#include <string>

#include "standalone/sms/Modem.h"
#include "standalone/sms/State.h"

namespace Standalone {
/// The commands of the tool, for any kind of modem. Each may throw a Problem.
class Commands {
 public:
  Commands(Modem& modem, State& state) : modem_(modem), state_(state) {}

  /// Prints the messages that were not printed before, and marks them as read. Tries refused deletions again.
  void listUnread(std::ostream& out);

  /// Prints the messages that are marked as read. After `out` has accepted them, marks them as printed.
  void listRead(std::ostream& out);

  /// Deletes the messages that are marked as printed. If the modem refuses to delete a message, this message
  /// is not printed again, and the next listUnread() tries again to delete it.
  void deleteRead();

 private:
  std::vector<Message> listedMessages(bool unreadToo);
  void deleteMarked();

  Modem& modem_;
  State& state_;
};

/// Returns the status as lines for a person, or as one JSON object.
std::string printed(const Status& status, bool asJson);
}  // namespace Standalone
