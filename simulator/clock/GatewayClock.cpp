#include "simulator/clock/GatewayClock.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace Simulator {
GatewayClock::GatewayClock(bool hold) {
  const int file = open(ClockControl::file, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  void* memory = MAP_FAILED;
  if (file >= 0 && ftruncate(file, sizeof(ClockControl)) == 0)
    memory = mmap(nullptr, sizeof(ClockControl), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  unlink(ClockControl::wakeFifo);
  const bool made = mkfifo(ClockControl::wakeFifo, 0600) == 0;
  wake_ = open(ClockControl::wakeFifo, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (memory == MAP_FAILED || !made || wake_ < 0) {
    std::perror(ClockControl::file);
    std::exit(1);
  }
  close(file);
  control_ = static_cast<ClockControl*>(memory);
  control_->hold = hold ? 1 : 0;
  control_->wall = std::time(nullptr);
  timespec monotonic{};
  clock_gettime(CLOCK_MONOTONIC, &monotonic);
  control_->monotonic = monotonic.tv_sec;
}

void GatewayClock::reset() {
  control_->begun = control_->ended = control_->granted = 0;
  if (control_->hold != 0) ++control_->skipped;
}

std::time_t GatewayClock::now() const {
  const std::int64_t wall = control_->hold != 0 ? control_->wall.load() : std::time(nullptr);
  return static_cast<std::time_t>(wall + control_->skipped);
}

void GatewayClock::set(std::time_t then) { control_->skipped += then - now(); }

void GatewayClock::grant() {
  control_->granted = control_->begun != control_->ended ? control_->begun.load() : control_->begun + 1;
  // If the FIFO is full (EAGAIN), the bytes in the FIFO wake the sleep.
  if (write(wake_, "g", 1) < 0 && errno != EAGAIN) std::perror(ClockControl::wakeFifo);
}
}  // namespace Simulator
