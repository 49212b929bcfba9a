#pragma once

#include <atomic>
#include <cstdint>

namespace Simulator {

/// The memory that the gateway and the clock library in the daemon share: a small file that both map. The
/// gateway also writes to a FIFO to wake a sleep. Times are in seconds.
struct ClockControl {
  static constexpr char file[] = "/run/gateway/clock";
  static constexpr char wakeFifo[] = "/run/gateway/wake";

  std::atomic<std::int64_t> skipped;  ///< the sum by which sleeps were cut short; both clocks are ahead by it
  std::atomic<std::int64_t> wall;     ///< if `hold`: the wall clock minus `skipped`
  std::atomic<std::int64_t> monotonic;  ///< if `hold`: the monotonic clock minus `skipped`
  /// 1: only `granted` or a signal ends a sleep, and the clocks advance only during sleeps.
  std::atomic<std::uint32_t> hold;
  std::atomic<std::uint32_t> begun;  ///< sleeps begun since the daemon was started
  std::atomic<std::uint32_t> ended;  ///< how many of these have ended
  /// Sleep number `granted`, counting from 1, and all sleeps before it end at once.
  std::atomic<std::uint32_t> granted;
  std::atomic<std::uint32_t> stops;  ///< 1: the next daemon stops itself when it has detached
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free, "two processes share the file");

}  // namespace Simulator
