#include "proof/Disturbances.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iostream>

#include "proof/Proofs.h"
#include "proof/Steps.h"
#include "simulator/support/Files.h"

namespace {

using namespace Step;
using Simulator::ApiFault;
using Simulator::ToolFault;

World::Step fault(unsigned active) {
  return [active](World& world) { world.faults = active; };
}

const World::Step fillVar = [](World& world) { world.gateway().var.fill(); };
const World::Step freeVar = [](World& world) { world.gateway().var.free(); };
const World::Step fillTmp = [](World& world) { world.gateway().tmp.fill(); };
const World::Step thaw = [](World&) { World::thaw(Simulator::MessageFolders::root); };
const World::Step closeSyslog = [](World& world) { world.gateway().syslog.close(); };
const World::Step closeApi = [](World& world) { world.gateway().api.close(world.below(2) == 0); };
const World::Step removeTool = [](World& world) { world.gateway().setToolThere(false); };
const World::Step unhangTool = [](World& world) { world.gateway().modem.clearFaults(); };
const World::Step deleteRead = [](World& world) { world.gateway().modem.deleteRead(); };
const World::Step removeSpool = [](World&) { std::filesystem::remove_all(World::spool); };
const World::Step terminate = [](World& world) { world.daemon().signal(SIGTERM); };
const World::Step killAll = [](World& world) { world.kill(true); };
const World::Step passes = [](World& world) { world.pass(1 + world.below(3)); };
const World::Step awaitSleep = [](World& world) { world.lives = world.awaitSleep(); };

void insidePass(World& world) {
  world.beginPass();
  usleep(world.below(world.passMicroseconds + world.passMicroseconds / 4));
}

void freeze(World& world) {
  if (World::freeze(Simulator::MessageFolders::root)) return;
  std::cout << "Left out: a read-only store, since nothing can be mounted here\n";
  world.faults = 0;
}

World::Step failTool(const char* operation) {
  return [operation](World& world) {
    constexpr ToolFault kinds[] = {ToolFault::Fail, ToolFault::Kill, ToolFault::Silent};
    world.gateway().modem.setFault(operation, kinds[world.below(3)], 1 + world.below(2));
  };
}

void silenceApi(World& world) {
  Simulator::LocalApiServer& api = world.gateway().api;
  api.setFault(ApiFault::Silent, 0);
  world.beginPass();
  world.awaitHang([&api] { return api.waiting() > 0; });
}

void spoilApi(World& world) {
  constexpr ApiFault faults[] = {ApiFault::Code, ApiFault::Garbage, ApiFault::Close};
  world.gateway().api.setFault(faults[world.below(3)], 500);
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

// The daemon reads the whitelist only when it starts.
World::Step whitelist(const Json::Value& entry) {
  return [entry](World& world) {
    Json::Value numbers(Json::arrayValue);
    numbers.append(entry);
    world.gateway().settings.set("smsCommands.whitelist.numbers", numbers);
  };
}

World::Steps fullFrom(const char* operation) {
  return {
      fault(Fault::DiskFull), at(operation), fillVar, unhangTool, awaitSleep, stop, freeVar, fault(0), start};
}

}  // namespace

const std::vector<Disturbance> survived = {
    {"no room under /var", {fault(Fault::DiskFull), fillVar, passes, repair}},
    {"no room under /tmp", {fault(Fault::TmpFull), fillTmp, passes, repair}},
    {"the store is read-only", {freeze, passes, repair, thaw, pass}},
    {"the clock is set back", {setClockBack}},
    {"syslog is gone", {closeSyslog, passes, repair}},
    {"the local API is gone", {fault(Fault::ApiFault), closeApi, passes, repair}},
    {"the local API answers wrongly", {fault(Fault::ApiFault), spoilApi, passes, repair}},
    {"the local API is silent", {fault(Fault::ApiFault), silenceApi, repair}},
    {"the tool is gone", {fault(Fault::SendFault), removeTool, passes, repair}},
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
    {"SIGTERM while the tool lists", {at("read"), terminate, unhangTool, stop, start}},
    {"SIGTERM while the tool sends", {at("send"), terminate, unhangTool, stop, start}},
    {"no room from \"list unread\" to a restart by SIGTERM", fullFrom("unread")},
    {"no room from \"list read\" to a restart by SIGTERM", fullFrom("read")},
    {"no room from \"delete\" to a restart by SIGTERM", fullFrom("delete")},
    {"no room from \"send\" to a restart by SIGTERM", fullFrom("send")},
    {"what is noted is removed",
     {at("delete", removeSpool), repair, at("delete", deleteRead), Step::kill, start}},
    {"the whitelist is spoilt",
     {stop, whitelist(Json::objectValue), fault(Fault::BadWhitelist), start, pass, stop,
      whitelist(World::friendly), fault(0), start}},
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
      world.pass(settlingPasses);
      good = world.report(name) && world.lives && good;
      if (!world.lives) std::cout << name << ": the daemon does not live through it" << std::endl;
    }
  return good;
}
