#include <gtest/gtest.h>

#include "support/SignalHold.h"

namespace {
volatile std::sig_atomic_t signals = 0;
}

TEST(SignalHold, DeliversTheSignalAtItsEnd) {
  const auto before = std::signal(SIGTERM, [](int) { signals = signals + 1; });
  {
    const Orvel::SignalHold hold;
    std::raise(SIGTERM);
    EXPECT_EQ(signals, 0);
  }
  EXPECT_EQ(signals, 1);
  std::raise(SIGTERM);
  EXPECT_EQ(signals, 2);
  std::signal(SIGTERM, before);
}
