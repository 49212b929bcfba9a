#pragma once

#include <algorithm>
#include <chrono>

namespace Standalone {
/// The time limit of a call of the tool.
class Deadline {
 public:
  explicit Deadline(std::chrono::seconds bound) : end_(std::chrono::steady_clock::now() + bound) {}

  /// Returns the time that is left, at most `most`; 0 after the deadline.
  std::chrono::milliseconds left(std::chrono::milliseconds most = std::chrono::hours(1)) const {
    using std::chrono::milliseconds;
    const auto rest = std::chrono::duration_cast<milliseconds>(end_ - std::chrono::steady_clock::now());
    return std::max(milliseconds(0), std::min(rest, most));
  }

  bool hasPassed() const { return left().count() == 0; }

 private:
  std::chrono::steady_clock::time_point end_;
};
}  // namespace Standalone
