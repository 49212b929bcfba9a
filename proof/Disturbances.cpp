#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iostream>

#include "proof/Proofs.h"
#include "proof/Scenario.h"
#include "simulator/console/Interpreter.h"
#include "simulator/support/Files.h"

namespace {
using namespace Step;

World::Step fault(unsigned active) {
  return [active](World& world) { world.faults = active; };
}

// Executes a line of the simulator's console.
World::Step say(const std::string& line) {
  return [line](World& world) { Simulator::Interpreter(world.gateway()).execute(line); };
}

// Executes one of these lines.
World::Step sayAny(const std::vector<std::string>& lines) {
  return [lines](World& world) { say(lines[world.below(static_cast<unsigned>(lines.size()))])(world); };
}

World::Step failTool(const std::string& operation) {
  const std::string begin = "fault tool " + operation;
  return sayAny({begin + " fail", begin + " fail 2", begin + " kill 2", begin + " silent 2"});
}

const World::Step deleteRead = [](World& world) { world.gateway().modem.deleteRead(); };
const World::Step removeSpool = [](World&) { std::filesystem::remove_all(World::spool); };
const World::Step thaw = [](World&) { World::thaw(Simulator::MessageFolders::root); };
const World::Step passes = [](World& world) { world.pass(1 + world.below(3)); };
const World::Step awaitSleep = [](World& world) { world.lives = world.awaitSleep(); };

void insidePass(World& world) {
  world.beginPass();
  usleep(world.below(40'000));
}

void freeze(World&) {
  if (!World::freeze(Simulator::MessageFolders::root))
    std::cout << "Left out: a read-only store, since nothing can be mounted here\n";
}

void awaitRequest(World& world) {
  world.beginPass();
  world.awaitHang([&world] { return world.gateway().api.waiting() > 0; });
}

void killTool(World& world) {
  for (const std::string& entry : Simulator::listFolder("/proc"))
    if (Simulator::readFile("/proc/" + entry + "/comm") == "sms\n") ::kill(std::stoi(entry), SIGKILL);
  world.gateway().modem.setHanging("");
  world.faults = Fault::CutListing;
}

// Repeats a second, and with it a guid.
void setClockBack(World& world) {
  const std::time_t now = world.gateway().clock.now();
  for (unsigned i = 0; i < 3; ++i) {
    world.gateway().clock.set(now);
    world.pass();
  }
}

World::Steps fullFrom(const char* operation) {
  return {at(operation), say("fault disk full"), say("repair tool"), awaitSleep, stop, say("repair disk"),
          start};
}
}  // namespace

const std::vector<Disturbance> survived = {
    {"no room under /var", {say("fault disk full"), passes, repair}},
    {"no room under /tmp", {fault(Fault::TmpFull), say("fault tmp full"), passes, repair}},
    {"the store is read-only", {freeze, passes, repair, thaw, pass}},
    {"the clock is set back", {setClockBack}},
    {"syslog is gone", {say("fault syslog gone"), passes, repair}},
    {"the local API is gone",
     {fault(Fault::ApiFault), sayAny({"fault api gone", "fault api refused"}), passes, repair}},
    {"the local API answers wrongly",
     {fault(Fault::ApiFault), sayAny({"fault api code 500", "fault api garbage", "fault api close"}), passes,
      repair}},
    {"the local API is silent", {fault(Fault::ApiFault), say("fault api silent"), awaitRequest, repair}},
    {"the tool is gone", {fault(Fault::SendFault), say("fault tool gone"), passes, repair}},
    {"the tool fails to list unread", {failTool("unread"), passes, repair}},
    {"the tool fails to list read", {failTool("read"), passes, repair}},
    {"the tool fails to delete", {fault(Fault::NotDeleted), failTool("delete"), passes, repair}},
    {"the tool fails to send", {fault(Fault::SendFault), failTool("send"), passes, repair}},
    {"the tool hangs while it lists", {at("read"), repair}},
    {"the tool hangs while it sends", {at("send"), repair}},
    {"the tool dies in the middle of a listing", {at("read", killTool), repair}},
};
const std::vector<Disturbance> lethal = {
    {"SIGKILL of the daemon", {insidePass, Step::kill, start}},
    {"SIGKILL of the daemon and the tool", {insidePass, killAll, start}},
    {"SIGTERM", {insidePass, stop, start}},
    {"SIGTERM while the tool lists", {at("read"), say("kill TERM"), say("repair tool"), stop, start}},
    {"SIGTERM while the tool sends", {at("send"), say("kill TERM"), say("repair tool"), stop, start}},
    {"no room from \"list unread\" to a restart by SIGTERM", fullFrom("unread")},
    {"no room from \"list read\" to a restart by SIGTERM", fullFrom("read")},
    {"no room from \"delete\" to a restart by SIGTERM", fullFrom("delete")},
    {"no room from \"send\" to a restart by SIGTERM", fullFrom("send")},
    {"what is noted is removed",
     {at("delete", removeSpool), repair, at("delete", deleteRead), Step::kill, start}},
    {"the whitelist is spoilt",
     {stop, say("settings smsCommands.whitelist.numbers [{}]"), fault(Fault::BadWhitelist), start, pass, stop,
      say("whitelist " + std::string(World::friendly)), fault(0), start}},
};

bool disturb(const Words& words) {
  bool good = true;
  for (const std::vector<Disturbance>* const table : {&survived, &lethal})
    for (const auto& [name, steps] : *table) {
      World world;
      world.beforePass = [&world] {
        for (unsigned i = 0; i < 4; ++i) world.receive("in " + std::to_string(world.ledger.entered()));
        world.queue("out " + std::to_string(world.ledger.entered()));
      };
      world.start();
      for (unsigned left = numberOf(words[0]); left > 0; --left) world.run(steps, name);
      world.beforePass = [] {};
      world.pass(World::settlingPasses);
      good = world.report(name) && world.lives && good;
      if (!world.lives) std::cout << name << ": the daemon does not live through it" << std::endl;
    }
  return good;
}
