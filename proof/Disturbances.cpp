#include "proof/Disturbances.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iostream>

#include "proof/Proofs.h"
#include "simulator/support/Files.h"

namespace {

using Simulator::ApiFault;
using Simulator::ToolFault;
using Action = std::function<void(World&)>;

// Keeps a fault active during an action, then repairs the gateway, also in the middle of a pass.
Action during(unsigned fault, const Action& action) {
  return [fault, action](World& world) {
    world.faults = fault;
    action(world);
    world.repair();
    world.faults = Fault::None;
  };
}

// Breaks something for one to three passes.
Action broken(unsigned fault, const Action& breakIt) {
  return during(fault, [breakIt](World& world) {
    breakIt(world);
    world.pass(1 + world.below(3));
  });
}

Action failingTool(const char* operation, unsigned fault) {
  return broken(fault, [operation](World& world) {
    constexpr ToolFault kinds[] = {ToolFault::Fail, ToolFault::Kill, ToolFault::Silent};
    world.gateway().modem.setFault(operation, kinds[world.below(3)], 1 + world.below(2));
  });
}

// The tool hangs in the middle of its output until it is repaired.
Action hangingTool(const char* operation) {
  return during(Fault::Other, [operation](World& world) { world.reach(operation); });
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

void cutListing(World& world) {
  if (!world.reach("read")) return;
  for (const std::string& entry : Simulator::listFolder("/proc"))
    if (Simulator::readFile("/proc/" + entry + "/comm") == "sms\n") kill(std::stoi(entry), SIGKILL);
  world.gateway().modem.setHanging("");
  world.faults = Fault::CutListing;
}

void freeze(World& world) {
  const bool frozen = World::freeze(Simulator::MessageFolders::root);
  if (!frozen) std::cout << "Left out: a read-only store, since nothing can be mounted here\n";
  broken(Fault::Other, [](World&) {})(world);
  if (frozen && !World::thaw(Simulator::MessageFolders::root)) std::abort();
  world.pass();
}

// Repeats a second, and with it a guid.
void setClockBack(World& world) {
  const std::time_t now = world.gateway().clock.now();
  for (unsigned i = 0; i < 3; ++i) {
    world.gateway().clock.set(now);
    world.pass();
  }
}

void waitInsidePass(World& world) {
  world.beginPass();
  usleep(world.below(world.passMicroseconds + world.passMicroseconds / 4));
}

Action killed(bool group) {
  return [group](World& world) {
    waitInsidePass(world);
    world.kill(group);
    world.start();
  };
}

void terminate(World& world) {
  waitInsidePass(world);
  world.stop();
  world.start();
}

Action terminatedAt(const char* operation) {
  return [operation](World& world) {
    world.reach(operation);
    world.daemon().signal(SIGTERM);
    world.gateway().modem.clearFaults();
    world.stop();
    world.start();
  };
}

// Fills the disk while the tool is busy, and sends SIGTERM before there is room again.
Action filledAt(const char* operation) {
  return [operation](World& world) {
    world.faults = Fault::DiskFull;
    world.reach(operation);
    world.gateway().var.fill();
    world.gateway().modem.clearFaults();
    world.lives = world.awaitSleep();
    world.stop();
    world.gateway().var.free();
    world.faults = Fault::None;
    world.start();
  };
}

// Removes the spool files. The daemon must note later messages again.
void removeNotes(World& world) {
  if (world.reach("delete")) std::filesystem::remove_all(World::spool);
  world.repair();
  if (world.reach("delete")) world.gateway().modem.deleteRead();
  world.kill();
  world.start();
}

// Restarts the daemon, because it reads the whitelist only when it starts.
void spoilWhitelist(World& world) {
  constexpr char setting[] = "smsCommands.whitelist.numbers";
  Simulator::Settings& settings = world.gateway().settings;
  const Json::Value numbers = settings.value()["smsCommands"]["whitelist"]["numbers"];
  Json::Value spoilt(Json::arrayValue);
  spoilt.append(Json::objectValue);
  world.stop();
  settings.set(setting, spoilt);
  world.faults = Fault::BadWhitelist;
  world.start();
  world.pass();
  world.stop();
  settings.set(setting, numbers);
  world.faults = Fault::None;
  world.start();
}

}  // namespace

const std::vector<Disturbance> survived = {
    {"no room under /var", broken(Fault::DiskFull, [](World& world) { world.gateway().var.fill(); })},
    {"no room under /tmp", broken(Fault::TmpFull, [](World& world) { world.gateway().tmp.fill(); })},
    {"the store is read-only", freeze},
    {"the clock is set back", setClockBack},
    {"syslog is gone", broken(Fault::Other, [](World& world) { world.gateway().syslog.close(); })},
    {"the local API is gone",
     broken(Fault::ApiFault, [](World& world) { world.gateway().api.close(world.below(2) == 0); })},
    {"the local API answers wrongly", broken(Fault::ApiFault, spoilApi)},
    {"the local API is silent", during(Fault::ApiFault, silenceApi)},
    {"the tool is gone", broken(Fault::SendFault, [](World& world) { world.gateway().setToolThere(false); })},
    {"the tool fails to list unread", failingTool("unread", Fault::Other)},
    {"the tool fails to list read", failingTool("read", Fault::Other)},
    {"the tool fails to delete", failingTool("delete", Fault::NotDeleted)},
    {"the tool fails to send", failingTool("send", Fault::SendFault)},
    {"the tool hangs while it lists", hangingTool("read")},
    {"the tool hangs while it sends", hangingTool("send")},
    {"the tool dies in the middle of a listing", during(Fault::Other, cutListing)},
};
const std::vector<Disturbance> lethal = {
    {"SIGKILL of the daemon", killed(false)},
    {"SIGKILL of the daemon and the tool", killed(true)},
    {"SIGTERM", terminate},
    {"SIGTERM while the tool lists", terminatedAt("read")},
    {"SIGTERM while the tool sends", terminatedAt("send")},
    {"no room from \"list unread\" to an ordered restart", filledAt("unread")},
    {"no room from \"list read\" to an ordered restart", filledAt("read")},
    {"no room from \"delete\" to an ordered restart", filledAt("delete")},
    {"no room from \"send\" to an ordered restart", filledAt("send")},
    {"what is noted is removed", removeNotes},
    {"the whitelist is spoilt", spoilWhitelist},
};

bool disturb(const World::Programs& programs, const Words& words) {
  std::vector<Disturbance> all = survived;
  all.insert(all.end(), lethal.begin(), lethal.end());
  bool good = true;
  for (const auto& [name, happens] : all) {
    World world(programs);
    world.beforePass = [&world] { world.load("load " + std::to_string(world.ledger.entered()), 4, 1); };
    world.start();
    for (unsigned left = numberOf(words[0]); world.lives && left > 0; --left) happens(world);
    world.beforePass = [] {};
    world.pass(settlingPasses);
    good = world.report(name) && world.lives && good;
    if (!world.lives) std::cout << name << ": the daemon does not live through it" << std::endl;
  }
  return good;
}
