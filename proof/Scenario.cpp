#include "proof/Scenario.h"

#include <csignal>
#include <cstdlib>
#include <iostream>

#include "proof/Proofs.h"
#include "proof/Steps.h"

namespace {

using namespace Step;

const World::Step half = [](World& world) { world.deliver(world.enter("in two parts", World::other, 2), 0); };
const World::Step otherHalf = [](World& world) { world.deliver(0, 1); };
const World::Step acceptAll = &World::accept;
const World::Step mustDelete = [](World& world) { world.lives = world.reach("delete"); };
// Avoids equal guids.
const World::Step nextMinute = [](World& world) {
  world.gateway().clock.set(world.gateway().clock.now() + 60);
};

}  // namespace

const std::vector<Scenario> scenarios = {
    {"several",
     {start},
     {receive("the first"), receive("p secret #ping 8.8.8.8", World::friendly),
      receive("a long message", World::other, 2)}},
    {"completed", {start, half, pass}, {otherHalf}},
    {"retried", {start, queue("goes out later", World::refused, 3), pass, acceptAll}, {}},
    {"retried in vain", {start, queue("is refused for ever", World::refused, 30), pass}, {}},
    {"limits",
     {start, receive("in 1"), queue("out 1"), pass, receive("in 2"), queue("out 2"), pass},
     {receive("in 3"), queue("is refused", World::refused)},
     2},
    {"first start", {}, {receive("waits on the modem"), queue("waits in the queue"), nextMinute}, 100, true},
    // The daemon was killed while the modem deleted messages that were not filed yet, among them a command.
    {"catching up",
     {start, receive("not filed yet"), receive("p secret #ping 8.8.4.4", World::friendly), mustDelete,
      Step::kill},
     {receive("comes later"), queue("goes out"), queue("goes out, too")},
     100,
     true},
};

World Scenario::prepare() const {
  World world(limit);
  world.run(before, name);
  if (!world.lives) std::abort();
  world.run(arrive, name);
  return world;
}

bool Scenario::begin(World& world, Tracer& tracer, const std::string& options) const {
  if (atStart) world.gateway().clock.stopNextDaemon();
  if (atStart && !(world.daemon().start().empty() && Tracer::awaitStop(world.daemon().pid()))) return false;
  if (!tracer.attach(world.daemon().pid(), options)) return false;
  if (atStart) return world.daemon().signal(SIGCONT);
  world.gateway().clock.grant();
  return true;
}

bool listScenarios(const Words&) {
  for (const Scenario& scenario : scenarios) std::cout << scenario.name << "\n";
  return true;
}
