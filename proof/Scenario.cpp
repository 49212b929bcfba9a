#include "proof/Scenario.h"

#include <csignal>
#include <cstdlib>

namespace {

void nothing(World&) {}

void mustPass(World& world) {
  if (!world.pass()) std::abort();
}

// Kills the daemon while the modem deletes messages that are not filed yet, among them a command.
void killWhileDeleting(World& world) {
  world.receive("not filed yet");
  world.receive("p secret #ping 8.8.4.4", World::friendly);
  if (!world.reach("delete") || !world.kill()) std::abort();
}

}  // namespace

const std::vector<Scenario> scenarios = {
    {"plain", nothing, [](World& world) { world.receive("a plain message"); }},
    {"several", nothing,
     [](World& world) {
       world.receive("the first");
       world.receive("p secret #ping 8.8.8.8", World::friendly);
       world.receive("a long message", World::other, 2);
     }},
    {"completed",
     [](World& world) {
       world.deliver(world.enter("in two parts", World::other, 2), 0);
       mustPass(world);
     },
     [](World& world) { world.deliver(0, 1); }},
    {"sent", nothing, [](World& world) { world.queue("goes out"); }},
    {"refused", nothing, [](World& world) { world.queue("is refused", World::refused); }},
    {"retried",
     [](World& world) {
       world.queue("goes out later", World::refused, 3);
       mustPass(world);
       world.accept();
     },
     nothing},
    {"retried in vain",
     [](World& world) {
       world.queue("is refused for ever", World::refused, 30);
       mustPass(world);
     },
     nothing},
    {"limits",
     [](World& world) {
       for (const char* const text : {"1", "2"}) {
         world.receive("in " + std::string(text));
         world.queue("out " + std::string(text));
         mustPass(world);
       }
     },
     [](World& world) {
       world.receive("in 3");
       world.queue("out 3");
     },
     2},
    {"first start", nullptr,
     [](World& world) {
       world.receive("waits on the modem");
       world.queue("waits in the queue");
       world.gateway().clock.set(world.gateway().clock.now() + 60);  // avoids equal guids
     },
     100, true},
    {"catching up", killWhileDeleting, [](World& world) { world.receive("comes later"); }, 100, true},
};

World prepare(const Scenario& scenario, World::Programs programs) {
  if (scenario.atStart)
    programs.daemon = Tracer::stoppable(programs.daemon, programs.simulatorFolder + "/libgateway-clock.so");
  World world(programs, scenario.limit);
  if (scenario.before != nullptr) {
    if (!world.start()) std::abort();
    scenario.before(world);
  }
  scenario.arrive(world);
  return world;
}

bool begin(const Scenario& scenario, World& world, Tracer& tracer, const std::vector<std::string>& options) {
  if (scenario.atStart &&
      !(Tracer::stopNext() && world.daemon().start().empty() && Tracer::awaitStop(world.daemon().pid())))
    return false;
  if (!tracer.attach(world.daemon().pid(), options)) return false;
  if (scenario.atStart)
    world.daemon().signal(SIGCONT);
  else
    world.gateway().clock.grant();
  return true;
}
