#pragma once

#include <atomic>
#include <cstdint>

namespace Simulator {

/// What the gateway and the clock library in the daemon share: a small file, mapped by both, and a FIFO into
/// which the gateway writes to wake a sleep. Times are seconds.
struct ClockControl {
  static constexpr char file[] = "/run/gateway/clock";
  static constexpr char wakeFifo[] = "/run/gateway/wake";

  std::atomic<std::int64_t> skipped;    ///< what both clocks are ahead: the parts of sleeps that were cut off
  std::atomic<std::int64_t> wall;       ///< with `hold`: where the wall clock stands, but for that
  std::atomic<std::int64_t> monotonic;  ///< the other one
  /// 1: a sleep ends only by a grant or a signal, whatever its length, and only sleeps take time: what a
  /// daemon does does not depend on how busy the machine is.
  std::atomic<std::uint32_t> hold;
  std::atomic<std::uint32_t> begun;  ///< sleeps begun since the daemon was started
  std::atomic<std::uint32_t> ended;  ///< of these, the ones that have ended
  /// Sleep number `granted`, counting from 1, and all before it end at once.
  std::atomic<std::uint32_t> granted;
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free, "two processes share the file");

}  // namespace Simulator
