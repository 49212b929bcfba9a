#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

/// What a process has of the system's resources.
struct Footprint {
  std::size_t residentKilobytes = 0;
  std::size_t descriptors = 0;
  std::size_t children = 0;

  /// All 0 when there is no such process.
  static Footprint of(pid_t process);

  std::string text() const;
};
