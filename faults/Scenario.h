#pragma once

#include <string>
#include <vector>

#include "faults/Trial.h"

/// A pass of the daemon with something to do.
struct Scenario {
  const char* name;
  void (*before)(Trial&);  ///< the daemon runs and sleeps; ends in that state
  void (*arrive)(Trial&);  ///< what the pass then meets
  unsigned limit = 100;    ///< of inbox and outbox
  bool atStart = false;    ///< the daemon does not run yet; traced is its start, to the end of its first pass
};

/// All of them, in the order in which their points are counted.
extern const std::vector<Scenario> scenarios;
