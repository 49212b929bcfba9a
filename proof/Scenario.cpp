#include "proof/Scenario.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <regex>
#include <stdexcept>

#include "proof/Proofs.h"
#include "simulator/support/Files.h"

namespace {
using namespace Step;
using Simulator::MessageFolders;

const World::Step half = [](World& world) { world.deliver(world.enter("in two parts", World::other, 2), 0); };
const World::Step otherHalf = [](World& world) { world.deliver(0, 1); };
const World::Step acceptAll = &World::accept;
const World::Step freezeFolders = [](World& world) {
  world.lives =
      World::freeze(MessageFolders::pathOf("received")) && World::freeze(MessageFolders::pathOf("sent"));
};
const World::Step thawFolders = [](World& world) {
  world.lives =
      World::thaw(MessageFolders::pathOf("received")) && World::thaw(MessageFolders::pathOf("sent"));
};

// The effect of a call that other processes see; empty without one.
std::string shown(const Tracer::Call& call) {
  static const std::regex command(R"re(execve\("/bin/sh", \["sh", "-c", (?:"--", )?"(.*)"\], )re");
  static const std::regex line(R"re(sendto\(\d+, "<(\d)>\w+ [ \d]\d [:\d]+ (.*)", \d+, )re");
  static const std::regex request(R"re(sendto\(\d+, "((?:GET|POST) [^ ]*).*\\r\\n\\r\\n(.*)", \d+, )re");
  std::smatch found;
  if (std::regex_search(call.text, found, command)) return "shell    " + found.str(1);
  if (std::regex_search(call.text, found, line)) return "log " + found.str(1) + "    " + found.str(2);
  if (std::regex_search(call.text, found, request)) return "request  " + found.str(1) + " " + found.str(2);
  return "";
}
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
    {"first start", {}, {receive("waits on the modem"), queue("waits in the queue")}, 100, true},
    // An earlier daemon was killed and has left one note of each stage.
    {"catching up",
     {start, half, pass, freezeFolders, otherHalf, pass, receive("not filed yet"),
      receive("p secret #ping 8.8.4.4", World::friendly), queue("sent and not moved"), pass,
      queue("was being sent"), at("send", killAll), thawFolders},
     {receive("comes later"), queue("goes out"), queue("goes out, too")},
     100,
     true},
};

const Scenario& Scenario::named(const std::string& name) {
  for (const Scenario& scenario : scenarios)
    if (name == scenario.name) return scenario;
  throw std::runtime_error("no scenario is called " + name);
}

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

bool showUndisturbed(const Words&) {
  for (const Scenario& scenario : scenarios) {
    if (scenario.atStart && !scenario.before.empty()) continue;  // it disturbs an earlier daemon
    World world = scenario.prepare();
    Tracer tracer;
    if (!scenario.begin(world, tracer, "-f -s 1000 -e trace=execve,sendto") || !world.awaitSleep())
      return false;
    tracer.detach();
    std::cout << "\n" << scenario.name << "\n";
    for (const Tracer::Call& call : Tracer::calls())
      if (const std::string text = shown(call); !text.empty()) std::cout << "  " << text << "\n";
    for (const std::string box : MessageFolders::names)
      for (const Json::Value& record : MessageFolders::records(box))
        std::cout << "  " << box << "  " << Simulator::toLine(record) << "\n";
  }
  return true;
}
