#pragma once

#include "proof/World.h"

/// A fault of the gateway that lasts for one or more passes. The world is repaired afterwards.
struct Disturbance {
  const char* name;
  World::Steps steps;
};
/// Those that the daemon survives, and those that end it; it is then started again.
extern const std::vector<Disturbance> survived, lethal;
