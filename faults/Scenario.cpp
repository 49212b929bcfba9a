#include "faults/Scenario.h"

#include <csignal>
#include <cstdlib>

#include "simulator/support/Waiting.h"

namespace {

void nothing(Trial&) {}

// The modem has deleted what the daemon has not filed, a command among it.
void killWhileDeleting(Trial& trial) {
  trial.receive("not filed yet");
  trial.receive("p secret #reboot", Trial::friendly);
  trial.gateway().modem.setFault("delete", Simulator::ToolFault::Hang, 1);
  trial.gateway().clock.grant();
  Simulator::waitUntil(10, [&] { return trial.gateway().modem.hangingOperation() == "delete"; });
  trial.daemon().signal(SIGKILL);
  trial.gateway().modem.clearFaults();
  if (!trial.awaitEnd()) std::abort();
}

}  // namespace

const std::vector<Scenario> scenarios = {
    {"plain", nothing, [](Trial& trial) { trial.receive("a plain message"); }},
    {"several", nothing,
     [](Trial& trial) {
       trial.receive("the first");
       trial.receive("p secret #ping 8.8.8.8", Trial::friendly);
       trial.receive("a long message", Trial::other, 2);
     }},
    {"completed",
     [](Trial& trial) {
       trial.receive("in two parts", Trial::other, 2, true);
       trial.pass();
     },
     [](Trial& trial) { trial.release(); }},
    {"sent", nothing, [](Trial& trial) { trial.queue("goes out"); }},
    {"refused", nothing, [](Trial& trial) { trial.queue("is refused", Trial::refused); }},
    {"retried",
     [](Trial& trial) {
       trial.queue("goes out later", Trial::refused, 3);
       trial.pass();
       trial.accept();
     },
     nothing},
    {"retried in vain",
     [](Trial& trial) {
       trial.queue("is refused for ever", Trial::refused, 30);
       trial.pass();
     },
     nothing},
    {"limits",
     [](Trial& trial) {
       for (const char* const text : {"1", "2"}) {
         trial.receive("in " + std::string(text));
         trial.queue("out " + std::string(text));
         trial.pass();
         if (*text == '1') trial.mayBeDisplaced();
       }
     },
     [](Trial& trial) {
       trial.receive("in 3");
       trial.queue("out 3");
     },
     2},
    {"first start", nullptr,
     [](Trial& trial) {
       trial.receive("waits on the modem");
       trial.queue("waits in the queue");
       trial.gateway().clock.set(trial.gateway().clock.now() + 60);  // no second with two guids
     },
     100, true},
    {"catching up", killWhileDeleting, [](Trial& trial) { trial.receive("comes later"); }, 100, true},
};

Trial prepare(const Scenario& scenario, Trial::Programs programs) {
  if (scenario.atStart)
    programs.daemon = Tracer::stoppable(programs.daemon, programs.simulatorFolder + "/libgateway-clock.so");
  Trial trial(programs, scenario.limit);
  if (scenario.before != nullptr) {
    if (!trial.start()) std::abort();
    scenario.before(trial);
  }
  scenario.arrive(trial);
  return trial;
}

bool begin(const Scenario& scenario, Trial& trial, Tracer& tracer, const std::vector<std::string>& options) {
  if (scenario.atStart &&
      !(Tracer::stopNext() && trial.daemon().start().empty() && Tracer::awaitStop(trial.daemon().pid())))
    return false;
  if (!tracer.attach(trial.daemon().pid(), options)) return false;
  if (scenario.atStart)
    trial.daemon().signal(SIGCONT);
  else
    trial.gateway().clock.grant();
  return true;
}
