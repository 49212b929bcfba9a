#pragma once

#include <cstdio>
#include <cstdlib>

/// If `holds` is false, prints `statement` and aborts, so that the fuzzer keeps the input.
inline void property(bool holds, const char* statement) {
  if (holds) return;
  std::fprintf(stderr, "This does not hold: %s\n", statement);
  std::abort();
}
