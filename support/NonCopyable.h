#pragma once

namespace Orvel {

/// Base of the classes that stand for one thing in the world, of which a copy would make no sense.
class NonCopyable {
 public:
  NonCopyable(const NonCopyable&) = delete;
  NonCopyable& operator=(const NonCopyable&) = delete;

 protected:
  NonCopyable() = default;
  ~NonCopyable() = default;
};

}  // namespace Orvel
