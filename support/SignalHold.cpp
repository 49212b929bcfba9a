#include "support/SignalHold.h"

namespace Orvel {

SignalHold::SignalHold() {
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGTERM);
  sigprocmask(SIG_BLOCK, &held, &before_);
}

SignalHold::~SignalHold() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

}  // namespace Orvel
