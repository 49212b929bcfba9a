#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Simulator {
/// The resources that a process uses.
struct Footprint {
  std::size_t resident = 0;     ///< kilobytes of memory
  std::size_t written = 0;      ///< the part of `resident` that the process has written
  std::size_t descriptors = 0;  ///< open file descriptors
  std::size_t children = 0;

  /// Measures a process. If the process does not exist, each number is 0.
  static Footprint of(pid_t process);

  /// Returns a text such as "8188 kB resident, 512 kB written, 5 descriptors, 0 children".
  std::string text() const;
};

/// Returns the children of the first thread of `process`. Adopted orphans are children, too.
std::vector<pid_t> childrenOf(pid_t process);
}  // namespace Simulator
