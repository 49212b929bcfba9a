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

  /// Measures a process; all 0 if it does not exist.
  static Footprint of(pid_t process);

  /// Returns "8188 kB resident, 512 kB written, 5 descriptors, 0 children".
  std::string text() const;
};

/// Returns the children that the first thread of a process started or inherited.
std::vector<pid_t> childrenOf(pid_t process);

}  // namespace Simulator
