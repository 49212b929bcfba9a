#pragma once

#include "proof/Tracer.h"
#include "proof/World.h"

/// A pass of the daemon with messages to process.
struct Scenario {
  const char* name;
  World::Steps before;   ///< none: the daemon has never run
  World::Steps arrive;   ///< adds the messages of the pass
  unsigned limit = 100;  ///< of inbox and outbox
  bool atStart = false;  ///< traces the daemon's start, to the end of its first pass

  /// The scenario with this name; throws if there is none.
  static const Scenario& named(const std::string& name);
  /// Brings a world to the beginning of the pass.
  World prepare() const;
  /// Begins the pass, or the start, under strace with these options; false when it cannot be traced.
  [[nodiscard]] bool begin(World& world, Tracer& tracer, const std::string& options) const;
};

/// All scenarios, in the order of proof/undisturbed.txt.
extern const std::vector<Scenario> scenarios;
