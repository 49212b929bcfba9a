#pragma once

#include <algorithm>
#include <chrono>

namespace Standalone {

/// The moment at which a call of the tool gives up.
class Deadline {
 public:
  explicit Deadline(std::chrono::seconds bound) : end_(std::chrono::steady_clock::now() + bound) {}

  /// Milliseconds until then, at most `wanted`; 0 when it has passed.
  std::chrono::milliseconds left(std::chrono::milliseconds wanted = std::chrono::hours(1)) const {
    using std::chrono::milliseconds;
    const auto rest = std::chrono::duration_cast<milliseconds>(end_ - std::chrono::steady_clock::now());
    return std::max(milliseconds(0), std::min(rest, wanted));
  }

  bool hasPassed() const { return left().count() == 0; }

 private:
  std::chrono::steady_clock::time_point end_;
};

}  // namespace Standalone
