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
using Disturbance = std::pair<const char*, World::Steps>;
/// Those that the daemon survives, and those that end it; it is then started again.
extern const std::vector<Disturbance> survived, lethal;
