#pragma once

#include <optional>
#include <string>

#include "faults/Trial.h"

/// Which points are tried.
struct Selection {
  unsigned shard = 0;  ///< of `shards` that share the points out among them
  unsigned shards = 1;
  unsigned sample = 0;  ///< so many points in all shards; 0: all of them
  unsigned seed = 0;
  std::string scenario;  ///< of this one alone; empty: of all
};

/// Crash points: the daemon is killed at each system call of its own in a pass, and started again. Prints
/// what is not as it should be, and for each point a line "TAB SCENARIO TAB KIND"; true when nothing is
/// wrong.
bool tryCrashPoints(const Trial::Programs& programs, const Selection& selection);
/// Fault points: each of these calls fails once, with each error that is plausible for it, and the daemon
/// goes on.
bool tryFaultPoints(const Trial::Programs& programs, const Selection& selection);
