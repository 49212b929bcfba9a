#pragma once

/// The kinds of messages.
namespace Kind {
enum : unsigned { Text = 1, Command = 2, StrangersCommand = 4, Outgoing = 8, Incoming = 7 };
}

/// The harms that a message can suffer.
enum class Harm : unsigned {
  Lost = 1,       ///< it is in no folder
  Twice = 2,      ///< it was filed, or posted, more than once
  Apart = 4,      ///< its parts were filed and never joined
  Unobeyed = 8,   ///< a permitted command was filed and not posted
  Unsent = 16,    ///< it was not sent, or is filed with the wrong result
  SentAgain = 32  ///< it was sent more than once
};
const char* nameOf(Harm harm);

/// A harm that a fault is known to do to messages that meet it. docs/reliability.md lists the windows.
struct Window {
  const char* name;
  unsigned kinds;  ///< Kind: the affected messages
  unsigned fault;  ///< Fault
  unsigned harms;  ///< Harm: what it explains; 0 for a fault that must do no harm
};
extern const Window windows[15];

/// The window that explains this harm to a message that met these faults; null when there is none.
const Window* windowOf(Harm harm, unsigned faults);
