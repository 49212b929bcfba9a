#pragma once

#include "proof/World.h"

/// What happens to a world, for the rows of tables.
namespace Step {
inline const World::Step start = &World::start, stop = &World::stop, repair = &World::repair;
inline const World::Step pass = [](World& world) { world.pass(); };
inline const World::Step kill = [](World& world) { world.kill(); };
inline const World::Step killAll = [](World& world) { world.kill(true); };  // the tool, too

inline World::Step receive(const std::string& text, const std::string& sender = World::other,
                           unsigned parts = 1) {
  return [=](World& world) { world.receive(text, sender, parts); };
}
inline World::Step queue(const std::string& text, const std::string& number = World::other,
                         unsigned retries = 0) {
  return [=](World& world) { world.queue(text, number, retries); };
}
/// Runs a pass until the tool's `operation`, and then `more`, if the pass has this operation.
inline World::Step at(const std::string& operation, const World::Step& more = [](World&) {}) {
  return [=](World& world) {
    if (world.reach(operation)) more(world);
  };
}
}  // namespace Step

/// A fault of the gateway that lasts for one or more passes. The world is repaired afterwards.
struct Disturbance {
  const char* name;
  World::Steps steps;
};
/// Those that the daemon survives, and those that end it; it is then started again.
extern const std::vector<Disturbance> survived, lethal;
