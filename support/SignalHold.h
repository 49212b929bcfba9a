#pragma once

#include <csignal>

#include "support/NonCopyable.h"

namespace Orvel {

/// Holds SIGTERM back for as long as the object lives; one that came meanwhile is delivered at its end.
///
/// SIGTERM is handled without restart, so it would make a read in progress fail with EINTR, which looks like
/// the end of the data. Start no process under a hold: it would inherit the blocked signal.
class SignalHold : private NonCopyable {
 public:
  SignalHold();
  ~SignalHold();

 private:
  sigset_t before_;
};

}  // namespace Orvel
