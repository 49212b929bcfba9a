#pragma once

#include "proof/World.h"

/// One way in which a gateway goes wrong for a pass or a few. The world is whole again afterwards.
struct Disturbance {
  const char* name;
  bool lethal;                                  ///< the daemon ends, and is started again
  bool (*happens)(World&, const char* detail);  ///< false when the daemon ends or hangs against its duty
  const char* detail = "";                      ///< of the tool: the operation that is hit
};
extern const std::vector<Disturbance> disturbances;
