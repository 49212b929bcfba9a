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
  CutListing = 1,     ///< the tool died in the middle of a listing
  NotDeleted = 2,     ///< the tool did not delete, whatever its status
  Listed = 4,         ///< the modem still had the message when the daemon ended
  Unobeyed = 8,       ///< the daemon logged that it does not obey this command
  BadWhitelist = 16,  ///< the whitelist has an entry without a text form
  ApiFault = 32,      ///< the local API did not answer correctly
  SendFault = 64,     ///< the tool did not send, or did not report it
  Unanswered = 128,   ///< the daemon logged that the result of a send is unknown
  TmpFull = 256,      ///< no room under /tmp
  Damaged = 512,      ///< the spool file of the message was damaged
};
}  // namespace Fault

namespace Harm {
enum : unsigned {
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
  unsigned harms;  ///< what it explains
};
extern const std::vector<Window> windows;

/// The window that explains this harm to a message of a kind that met these faults; null when there is none.
const Window* windowOf(unsigned harm, unsigned kind, unsigned faults);
