#pragma once

/// What went wrong in a pass, as a set of bits: what the ledger may explain a loss by.
namespace Fault {
enum : unsigned {
  None = 0,
  Killed = 1U << 0,        ///< SIGKILL of the daemon
  Restarted = 1U << 1,     ///< the first pass of a new daemon
  DiskFull = 1U << 2,      ///< no room under /var
  TmpFull = 1U << 3,       ///< no room under /tmp
  CutListing = 1U << 4,    ///< the tool died in the middle of a listing
  NotDeleted = 1U << 5,    ///< the tool did not delete, whatever it said
  SendFault = 1U << 6,     ///< the tool did not send, or did not say so
  BadWhitelist = 1U << 7,  ///< the whitelist has an entry without a text form
  ApiFault = 1U << 8,      ///< the local API did not answer as it should
  Other = 1U << 9,         ///< one that may cost nothing: SIGTERM, no syslog, a tool that fails to list
};
}  // namespace Fault
