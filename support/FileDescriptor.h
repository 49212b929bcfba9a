#pragma once

#include <unistd.h>

#include <utility>

#include "support/NonCopyable.h"

namespace Orvel {
/// Owns a file descriptor. The destructor closes it.
class FileDescriptor : private NonCopyable {
 public:
  /// Takes ownership of `descriptor`. A negative value, such as the result of a failed open(), is not closed.
  explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~FileDescriptor() { reset(); }

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
  [[nodiscard]] int get() const { return descriptor_; }

  /// Releases ownership of the descriptor without closing it.
  [[nodiscard]] int release() { return std::exchange(descriptor_, -1); }

  /// Closes the owned descriptor and takes ownership of `descriptor`.
  void reset(int descriptor = -1) {
    const int old = std::exchange(descriptor_, descriptor);
    if (old >= 0) close(old);
  }

 private:
  int descriptor_;
};
}  // namespace Orvel
