#include "proof/Scenario.h"

#include <csignal>
#include <cstdlib>
#include <iostream>

#include "proof/Proofs.h"

namespace {

void nothing(World&) {}

void firstHalf(World& world) {
  world.deliver(world.enter("in two parts", World::other, 2), 0);
  world.pass();
}

void failsOnce(World& world) {
  world.queue("goes out later", World::refused, 3);
  world.pass();
  world.accept();
}

void failsAlways(World& world) {
  world.queue("is refused for ever", World::refused, 30);
  world.pass();
}

void fillTheFolders(World& world) {
  for (const std::string number : {"1", "2"}) {
    world.receive("in " + number);
    world.queue("out " + number);
    world.pass();
  }
}

// Kills the daemon while the modem deletes messages that are not filed yet, among them a command.
void killWhileDeleting(World& world) {
  world.receive("not filed yet");
  world.receive("p secret #ping 8.8.4.4", World::friendly);
  if (!world.reach("delete")) std::abort();
  world.kill();
}

void threeArrive(World& world) {
  world.receive("the first");
  world.receive("p secret #ping 8.8.8.8", World::friendly);
  world.receive("a long message", World::other, 2);
}

void oneEachWay(World& world) {
  world.receive("in 3");
  world.queue("out 3");
}

void bothWait(World& world) {
  world.receive("waits on the modem");
  world.queue("waits in the queue");
  world.gateway().clock.set(world.gateway().clock.now() + 60);  // avoids equal guids
}

}  // namespace

const std::vector<Scenario> scenarios = {
    {"plain", nothing, [](World& world) { world.receive("a plain message"); }},
    {"several", nothing, threeArrive},
    {"completed", firstHalf, [](World& world) { world.deliver(0, 1); }},
    {"sent", nothing, [](World& world) { world.queue("goes out"); }},
    {"refused", nothing, [](World& world) { world.queue("is refused", World::refused); }},
    {"retried", failsOnce, nothing},
    {"retried in vain", failsAlways, nothing},
    {"limits", fillTheFolders, oneEachWay, 2},
    {"first start", nullptr, bothWait, 100, true},
    {"catching up", killWhileDeleting, [](World& world) { world.receive("comes later"); }, 100, true},
};

World Scenario::prepare(World::Programs programs) const {
  if (atStart)
    programs.daemon = Tracer::stoppable(programs.daemon, programs.simulatorFolder + "/libgateway-clock.so");
  World world(programs, limit);
  if (before != nullptr) {
    world.start();
    before(world);
  }
  if (!world.lives) std::abort();
  arrive(world);
  return world;
}

bool Scenario::begin(World& world, Tracer& tracer, const std::string& options) const {
  if (atStart && !(Tracer::stopNext() && world.daemon().start().empty())) return false;
  const pid_t daemon = world.daemon().pid();
  if (atStart && !Tracer::awaitStop(daemon)) return false;
  if (!tracer.attach(daemon, options)) return false;
  if (atStart) return world.daemon().signal(SIGCONT);
  world.gateway().clock.grant();
  return true;
}

bool listScenarios(const World::Programs&, const Words&) {
  for (const Scenario& scenario : scenarios) std::cout << scenario.name << "\n";
  return true;
}
