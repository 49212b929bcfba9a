#pragma once

#include <string>

/// The faults that a message met on its way, as a set of bits. A window explains a harm by one of them.
namespace Fault {
enum : unsigned {
  None = 0,
  Restarted = 1U << 0,     ///< the first pass of a new daemon
  DiskFull = 1U << 1,      ///< no room under /var
  TmpFull = 1U << 2,       ///< no room under /tmp
  CutListing = 1U << 3,    ///< the tool died in the middle of a listing
  NotDeleted = 1U << 4,    ///< the tool did not delete, whatever its status
  SendFault = 1U << 5,     ///< the tool did not send, or did not report it
  BadWhitelist = 1U << 6,  ///< the whitelist has an entry without a text form
  ApiFault = 1U << 7,      ///< the local API did not answer correctly
  Other = 1U << 8,         ///< a fault without harm: SIGTERM, no syslog, a tool that fails to list
  Killed = 1U << 9,        ///< the daemon was killed, or its power was cut
  Listed = 1U << 10,       ///< the modem still had the message when the daemon ended
  Unanswered = 1U << 11,   ///< the daemon logged that the result of a send is unknown
  Unobeyed = 1U << 12,     ///< the daemon logged that it does not obey this command
  Damaged = 1U << 13,      ///< the spool file of the message was damaged
};

/// The names of the bits, for a person.
std::string names(unsigned faults);
}  // namespace Fault
