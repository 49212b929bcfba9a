#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run, and with it keeps the input, when `statement` does not hold of it.
inline void property(bool holds, const char* statement) {
  if (holds) return;
  std::fprintf(stderr, "This does not hold: %s\n", statement);
  std::abort();
}
