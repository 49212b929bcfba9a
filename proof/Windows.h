#pragma once

/// What may become of a message.
namespace Kind {
enum : unsigned { Text = 1, Command = 2, StrangersCommand = 4, Outgoing = 8, Incoming = 7 };
}

/// What may be wrong with a message in the end.
enum class Harm : unsigned {
  Lost = 1,       ///< it is nowhere
  Twice = 2,      ///< it was filed, or posted, more than once
  Apart = 4,      ///< its parts were filed and never joined
  Unobeyed = 8,   ///< a permitted command was filed and not posted
  Unsent = 16,    ///< it was not sent, or is filed as something else than what happened
  SentAgain = 32  ///< it was sent more than once
};
const char* nameOf(Harm harm);

/// A known fault that may harm a message that meets it. The windows are those of docs/reliability.md.
struct Window {
  const char* name;
  unsigned kinds;  ///< Kind: the messages that it concerns
  unsigned fault;  ///< Fault
  unsigned harms;  ///< Harm: what it explains; 0 for a fault that may cost nothing
};
extern const Window windows[15];

/// The window that explains this harm of a message that met these faults; null when there is none.
const Window* windowOf(Harm harm, unsigned faults);
