#pragma once

#include "proof/World.h"

/// A fault of the gateway that lasts for one or more passes. The world is repaired afterwards.
struct Disturbance {
  const char* name;
  bool lethal;                                  ///< the daemon ends, and is restarted
  bool (*happens)(World&, const char* detail);  ///< false when the daemon ends or hangs and must not
  const char* detail = "";                      ///< the operation of the tool that fails
};
extern const std::vector<Disturbance> disturbances;
