#pragma once

#include <string>
#include <vector>

#include "proof/Tracer.h"
#include "proof/World.h"

/// A pass of the daemon with something to do.
struct Scenario {
  const char* name;
  void (*before)(World&);  ///< the daemon runs and sleeps; null: it has never run
  void (*arrive)(World&);  ///< what the pass then meets
  unsigned limit = 100;    ///< of inbox and outbox
  bool atStart = false;    ///< the daemon does not run yet; traced is its start, to the end of its first pass
};

/// All of them, in the order of proof/undisturbed.txt.
extern const std::vector<Scenario> scenarios;

/// Brings a world to where the pass begins.
World prepare(const Scenario& scenario, World::Programs programs);
/// Lets the pass, or the start, begin under strace with these options; false when it cannot be traced.
[[nodiscard]] bool begin(const Scenario& scenario, World& world, Tracer& tracer,
                         const std::vector<std::string>& options);
