#pragma once

#include <atomic>
#include <cstdint>

namespace Simulator {
/// Shared memory of the simulated gateway and the clock library in the daemon: both map the same file. To
/// end a sleep, the simulated gateway also writes to a FIFO. Times are in seconds.
struct ClockControl {
  static constexpr char file[] = "/run/gateway/clock";
  static constexpr char wakeFifo[] = "/run/gateway/wake";

  std::atomic<std::int64_t> skipped;    ///< added to both clocks: the time that was skipped so far
  std::atomic<std::int64_t> wall;       ///< if `hold` is 1: the wall clock before `skipped` is added
  std::atomic<std::int64_t> monotonic;  ///< if `hold` is 1: the monotonic clock before `skipped` is added
  /// 1: a sleep lasts until `granted` or a signal ends it, and the clocks advance only by `skipped`.
  std::atomic<std::uint32_t> hold;
  std::atomic<std::uint32_t> begun;  ///< the number of sleeps that have begun since the daemon started
  std::atomic<std::uint32_t> ended;  ///< the number of sleeps that have ended since the daemon started
  /// The sleeps up to this number end at once. The first sleep has number 1.
  std::atomic<std::uint32_t> granted;
  std::atomic<std::uint32_t> stops;  ///< 1: the next daemon sends itself SIGSTOP directly after its fork
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free, "a lock would not work between two processes");
}  // namespace Simulator
