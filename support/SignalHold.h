#pragma once

#include <csignal>

#include "support/NonCopyable.h"

namespace Orvel {
/// Blocks SIGTERM while the object lives. A SIGTERM that arrives in this time is delivered afterwards.
///
/// The daemon's handler has no SA_RESTART: SIGTERM makes a read fail with EINTR, which looks like the end of
/// the data. Start no process while the object lives, because the process inherits the blocked signal.
class SignalHold : private NonCopyable {
 public:
  SignalHold() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGTERM);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalHold() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};
}  // namespace Orvel
