#include "simulator/support/Waiting.h"

#include <unistd.h>

#include <chrono>

namespace Simulator {
void sleepAMoment() { usleep(300); }

bool waitUntil(double seconds, const std::function<bool()>& done, const std::function<void()>& pause) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (!done()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    pause();
  }
  return true;
}
}  // namespace Simulator
