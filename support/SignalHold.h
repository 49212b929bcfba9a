#pragma once

#include <csignal>

#include "support/NonCopyable.h"

namespace Orvel {

/// Blocks SIGTERM while the object lives. A SIGTERM that arrives meanwhile is delivered at its end.
///
/// The handler does not restart system calls: SIGTERM makes a read fail with EINTR, which looks like the end
/// of the data. Start no process while the object lives: it would inherit the blocked signal.
class SignalHold : private NonCopyable {
 public:
  SignalHold();
  ~SignalHold();

 private:
  sigset_t before_;
};

}  // namespace Orvel
