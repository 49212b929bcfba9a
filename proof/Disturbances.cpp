#include "proof/Disturbances.h"

#include <sys/mount.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iostream>
#include <map>

#include "proof/Fault.h"
#include "proof/Proofs.h"
#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace {

using Simulator::ApiFault;
using Simulator::ToolFault;

constexpr const char* root = Simulator::MessageFolders::root;

// Repairs the gateway and ends a disturbance, also in a pass that has not ended yet.
bool repaired(World& world) {
  const bool good = world.gateway().repair() && world.awaitSleep();
  world.faults = Fault::None;
  return good;
}

// Keeps a fault active for some passes.
bool during(World& world, unsigned fault) {
  world.faults = fault;
  const bool passed = world.pass(1 + world.below(3));
  return repaired(world) && passed;
}

bool breakTool(World& world, const char* operation) {
  const std::map<std::string, unsigned> faults = {{"delete", Fault::NotDeleted}, {"send", Fault::SendFault}};
  const auto fault = faults.find(operation);
  constexpr ToolFault kinds[] = {ToolFault::Fail, ToolFault::Kill, ToolFault::Silent};
  world.gateway().modem.setFault(operation, kinds[world.below(3)], 1 + world.below(2));
  return during(world, fault != faults.end() ? fault->second : static_cast<unsigned>(Fault::Other));
}

// The tool hangs in the middle of its output until it is repaired.
bool hangTool(World& world, const char* operation) {
  world.faults = Fault::Other;
  world.reach(operation);
  return repaired(world);
}

bool silenceApi(World& world, const char*) {
  world.faults = Fault::ApiFault;
  world.gateway().api.setFault(ApiFault::Silent, 0);
  world.beginPass();
  world.awaitHang([&] { return world.gateway().api.waiting() > 0; });
  return repaired(world);
}

bool cutListing(World& world, const char*) {
  world.faults = Fault::Other;
  if (world.reach("read")) {
    for (const std::string& entry : Simulator::listFolder("/proc"))
      if (Simulator::readFile("/proc/" + entry + "/comm") == "sms\n") ::kill(std::stoi(entry), SIGKILL);
    world.gateway().modem.setHanging("");
    world.faults = Fault::CutListing;
  }
  return repaired(world);
}

bool freeze(World& world, const char*) {
  if (mount(root, root, nullptr, MS_BIND, nullptr) != 0) {
    std::cout << "Left out: a read-only store, since nothing can be mounted here\n";
    return world.pass();
  }
  if (mount(nullptr, root, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0) return false;
  const bool passed = during(world, Fault::Other);
  return umount2(root, MNT_DETACH) == 0 && passed && world.pass();
}

// Repeats a second, and with it a guid.
bool setClockBack(World& world, const char*) {
  const std::time_t now = world.gateway().clock.now();
  for (unsigned i = 0; i < 3; ++i) {
    world.gateway().clock.set(now);
    if (!world.pass()) return false;
  }
  return true;
}

void waitInsidePass(World& world) {
  world.beginPass();
  usleep(world.below(world.passMicroseconds + world.passMicroseconds / 4));
}

bool kill(World& world, const char* group) {
  waitInsidePass(world);
  return world.kill(*group != '\0') && world.start();
}

bool terminate(World& world, const char*) {
  waitInsidePass(world);
  return world.stop() && world.start();
}

bool terminateAt(World& world, const char* operation) {
  world.reach(operation);
  world.daemon().signal(SIGTERM);
  world.gateway().modem.clearFaults();
  return world.stop() && world.start();
}

// Fills the disk while the tool is busy, and sends SIGTERM before there is room again.
bool fillAt(World& world, const char* operation) {
  world.faults = Fault::DiskFull;
  world.reach(operation);
  world.gateway().var.fill();
  world.gateway().modem.clearFaults();
  const bool ended = world.awaitSleep() && world.stop();
  world.gateway().var.free();
  world.faults = Fault::None;
  return ended && world.start();
}

// Removes the spool files. The daemon must note later messages again.
bool removeNotes(World& world, const char*) {
  if (world.reach("delete")) std::filesystem::remove_all(World::spool);
  if (!repaired(world)) return false;
  if (world.reach("delete")) world.gateway().modem.deleteRead();
  return world.kill() && world.start();
}

// Restarts the daemon, because it reads the whitelist only when it starts.
bool spoilWhitelist(World& world, const char*) {
  Simulator::Settings& settings = world.gateway().settings;
  const Json::Value numbers = settings.value()["smsCommands"]["whitelist"]["numbers"];
  if (!world.stop()) return false;
  Json::Value spoilt(Json::arrayValue);
  spoilt.append(Json::objectValue);
  settings.set("smsCommands.whitelist.numbers", spoilt);
  world.faults = Fault::BadWhitelist;
  const bool lived = world.start() && world.pass() && world.stop();
  settings.set("smsCommands.whitelist.numbers", numbers);
  world.faults = Fault::None;
  return lived && world.start();
}

bool fillVar(World& world, const char*) {
  world.gateway().var.fill();
  return during(world, Fault::DiskFull);
}
bool fillTmp(World& world, const char*) {
  world.gateway().tmp.fill();
  return during(world, Fault::TmpFull);
}
bool removeTool(World& world, const char*) {
  world.gateway().setToolThere(false);
  return during(world, Fault::SendFault);
}
bool closeSyslog(World& world, const char*) {
  world.gateway().syslog.close();
  return during(world, Fault::Other);
}
bool closeApi(World& world, const char*) {
  world.gateway().api.close(world.below(2) == 0);
  return during(world, Fault::ApiFault);
}
bool spoilApi(World& world, const char*) {
  constexpr ApiFault faults[] = {ApiFault::Code, ApiFault::Garbage, ApiFault::Close};
  world.gateway().api.setFault(faults[world.below(3)], 500);
  return during(world, Fault::ApiFault);
}

}  // namespace

const std::vector<Disturbance> disturbances = {
    {"no room under /var", false, fillVar},
    {"no room under /tmp", false, fillTmp},
    {"the store is read-only", false, freeze},
    {"the clock is set back", false, setClockBack},
    {"syslog is gone", false, closeSyslog},
    {"the local API is gone", false, closeApi},
    {"the local API answers wrongly", false, spoilApi},
    {"the local API is silent", false, silenceApi},
    {"the tool is gone", false, removeTool},
    {"the tool fails to list unread", false, breakTool, "unread"},
    {"the tool fails to list read", false, breakTool, "read"},
    {"the tool fails to delete", false, breakTool, "delete"},
    {"the tool fails to send", false, breakTool, "send"},
    {"the tool hangs while it lists", false, hangTool, "read"},
    {"the tool hangs while it sends", false, hangTool, "send"},
    {"the tool dies in the middle of a listing", false, cutListing},
    {"SIGKILL of the daemon", true, kill},
    {"SIGKILL of the daemon and the tool", true, kill, "group"},
    {"SIGTERM", true, terminate},
    {"SIGTERM while the tool lists", true, terminateAt, "read"},
    {"SIGTERM while the tool sends", true, terminateAt, "send"},
    {"no room from \"list unread\" to an ordered restart", true, fillAt, "unread"},
    {"no room from \"list read\" to an ordered restart", true, fillAt, "read"},
    {"no room from \"delete\" to an ordered restart", true, fillAt, "delete"},
    {"no room from \"send\" to an ordered restart", true, fillAt, "send"},
    {"what is noted is removed", true, removeNotes},
    {"the whitelist is spoilt", true, spoilWhitelist},
};

bool disturb(const World::Programs& programs, const Words& words) {
  constexpr unsigned settlingPasses = 4;
  const unsigned times = numberOf(words[0]);
  bool good = true;
  for (const Disturbance& disturbance : disturbances) {
    World world(programs);
    world.beforePass = [&] { world.load("load " + std::to_string(world.ledger.entered()), 4, 1); };
    bool lives = world.start();
    for (unsigned time = 0; lives && time < times; ++time)
      lives = disturbance.happens(world, disturbance.detail);
    world.beforePass = [] {};
    lives = lives && world.pass(settlingPasses);
    good = world.report(disturbance.name) && lives && good;
    if (!lives) std::cout << disturbance.name << ": the daemon does not live through it" << std::endl;
  }
  return good;
}
