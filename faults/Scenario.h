#pragma once

#include <string>
#include <vector>

#include "faults/Tracer.h"
#include "faults/Trial.h"

/// A pass of the daemon with something to do.
struct Scenario {
  const char* name;
  void (*before)(Trial&);  ///< the daemon runs and sleeps; null: it has never run
  void (*arrive)(Trial&);  ///< what the pass then meets
  unsigned limit = 100;    ///< of inbox and outbox
  bool atStart = false;    ///< the daemon does not run yet; traced is its start, to the end of its first pass
};

/// All of them, in the order in which their points are counted.
extern const std::vector<Scenario> scenarios;

/// Brings a gateway to where the pass begins.
Trial prepare(const Scenario& scenario, Trial::Programs programs);
/// Lets the pass, or the start, begin under strace with these options; false when it cannot be traced.
[[nodiscard]] bool begin(const Scenario& scenario, Trial& trial, Tracer& tracer,
                         const std::vector<std::string>& options);
