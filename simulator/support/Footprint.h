#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Simulator {

/// What a process has of the system's resources.
struct Footprint {
  std::size_t resident = 0;     ///< kilobytes of memory
  std::size_t written = 0;      ///< of these, the ones that the process has written itself
  std::size_t descriptors = 0;  ///< open ones
  std::size_t children = 0;

  /// All 0 when there is no such process.
  static Footprint of(pid_t process);

  /// "8188 kB resident, 512 kB written, 5 descriptors, 0 children"
  std::string text() const;
};

/// The children of a process, as far as its first thread started or inherited them.
std::vector<pid_t> childrenOf(pid_t process);

}  // namespace Simulator
