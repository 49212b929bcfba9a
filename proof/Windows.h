#pragma once

#include <string>
#include <vector>

// Kinds of messages, faults and harms are bits, so that one number holds a set of them.

namespace Kind {
enum : unsigned { Text = 1, Command = 2, Incoming = 3, Outgoing = 4 };  // Command: a permitted one
}

/// The faults that a message can meet while it is under way.
namespace Fault {
enum : unsigned {
  DiskFull = 1U << 1,      ///< no room under /var
  TmpFull = 1U << 2,       ///< no room under /tmp
  CutListing = 1U << 3,    ///< the tool died in the middle of a listing
  NotDeleted = 1U << 4,    ///< the tool did not delete, whatever its status
  SendFault = 1U << 5,     ///< the tool did not send, or did not report it
  BadWhitelist = 1U << 6,  ///< the whitelist has an entry without a text form
  ApiFault = 1U << 7,      ///< the local API did not answer correctly
  Killed = 1U << 9,        ///< the daemon was killed, or its power was cut
  Listed = 1U << 10,       ///< the modem still had the message when the daemon ended
  Unanswered = 1U << 11,   ///< the daemon logged that the result of a send is unknown
  Unobeyed = 1U << 12,     ///< the daemon logged that it does not obey this command
  Damaged = 1U << 13,      ///< the spool file of the message was damaged
};
}  // namespace Fault

namespace Harm {
enum : unsigned {
  None = 0,
  Lost = 1,        ///< it is in no folder
  Twice = 2,       ///< it was filed, or posted, more than once
  Apart = 4,       ///< its parts were filed and never joined
  Unobeyed = 8,    ///< a permitted command was filed and not posted
  Unsent = 16,     ///< it was not sent, or is filed with the wrong result
  SentAgain = 32,  ///< it was sent more than once
  Any = 63
};
std::string name(unsigned harm);
}  // namespace Harm

/// A fault that can still harm the messages it affects. docs/reliability.md lists the windows.
struct Window {
  const char* name;
  unsigned kinds;  ///< the affected messages
  unsigned fault;
  unsigned harms;  ///< what it explains; None for a fault that must do no harm
};
extern const std::vector<Window> windows;

/// The window that explains this harm to a message of a kind that met these faults; null when there is none.
const Window* windowOf(unsigned harm, unsigned kind, unsigned faults);
