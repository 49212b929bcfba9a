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

  /// Prints the messages that no call has printed so far, and marks them as read.
  void listUnread(std::ostream& out);

  /// Prints the messages that are marked as read. Those that `out` has accepted may then be deleted.
  void listRead(std::ostream& out);

  /// Deletes the messages that listRead() has printed, and no others. A message that the modem refuses to
  /// delete is not printed again; the next listUnread() tries again to delete it.
  void deleteRead();

 private:
  std::vector<Message> shown(bool unreadToo);
  void deleteMarked(State::Mark mark);

  Modem& modem_;
  State& state_;
};

/// The status as lines for a person, or as one JSON object.
std::string printed(const Status& status, bool asJson);

}  // namespace Standalone
