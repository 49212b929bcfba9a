#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <map>

#include "proof/Fault.h"
#include "proof/Proofs.h"
#include "simulator/support/Files.h"

namespace {

constexpr unsigned limit = 1000;
constexpr char logs[] = "/run/modem/logs";  // logs of the daemons whose power was cut

// The messages on their way when the daemon starts.
struct Situation {
  unsigned incoming, outgoing, parts;
};
const std::map<std::string, Situation> situations = {
    {"receiving", {40, 0, 1}}, {"filed", {40, 0, 1}}, {"parts", {40, 0, 2}},
    {"sending", {0, 20, 1}},   {"tool", {5, 3, 1}},
};

// Enters the messages. `really`: also delivers them, without their last parts, or queues them.
void enter(World& world, const Situation& situation, bool really) {
  for (unsigned i = 0; i < situation.incoming; ++i) {
    const unsigned message =
        world.enter("a text whose end is " + std::to_string(i), World::other, situation.parts);
    for (std::size_t part = 0; part < situation.parts; ++part) {
      if (!really) world.ledger.arrived(message, part);
      if (really && (part == 0 || part + 1 < situation.parts)) world.deliver(message, part);
    }
  }
  for (unsigned i = 0; i < situation.outgoing; ++i) {
    const std::string text = "a queued text whose end is " + std::to_string(i);
    if (really)
      world.queue(text);
    else
      world.ledger.enterQueued(text, World::other, false);
  }
}

bool prepare(const World::Programs& programs, const Situation& situation) {
  World world(programs, limit);
  if (!world.start() || !world.stop()) return false;
  enter(world, situation, true);
  if (situation.parts == 1) return true;
  const bool good = world.start() && world.stop();
  for (unsigned message = 0; message < situation.incoming; ++message)
    world.deliver(message, situation.parts - 1);
  return good;
}

// Starts the daemon and waits for the cut.
bool run(const World::Programs& programs) {
  World world(programs, limit, false);
  std::cout << "The daemon starts" << std::endl;
  if (world.start()) std::cout << "The daemon runs" << std::endl;
  return pause() == 0;
}

// For the stages after the tool's work, the tool hangs before it, and the test does that work itself.
bool runTo(const World::Programs& programs, const std::string& stage, const std::string& image) {
  const std::string operation = stage == "deleted" ? "delete" : stage == "sent" ? "send" : stage;
  World world(programs, limit, false);
  Simulator::Modem& modem = world.gateway().modem;
  modem.setHanging("");  // clears the mark of a tool whose power was cut
  modem.setFault(operation, Simulator::ToolFault::Hang, 1);
  if (!world.daemon().start().empty()) return false;
  const bool hangs = world.awaitHang([&] { return modem.hangingOperation() == operation; });
  if (!hangs) std::cout << "The tool has nothing to " << operation << std::endl;
  if (hangs && stage == "deleted") modem.deleteRead();
  if (hangs && stage == "sent") modem.send(World::other, Simulator::readFile("/tmp/sms/sms-tmp"));
  for (const auto& line : world.gateway().syslog.lines()) Simulator::appendFile(logs, line.text + "\n");
  std::filesystem::copy_file(image, image + ".cut", std::filesystem::copy_options::overwrite_existing);
  _exit(EXIT_SUCCESS);  // without cleanup: the power is gone
}

bool look(const World::Programs& programs, const std::string& name) {
  World world(programs, limit, false);
  world.gateway().modem.clearFaults();
  enter(world, situations.at(name), false);
  world.look("the power is back");
  world.ledger.died();
  world.ledger.observe({Fault::None, {Simulator::readFile(logs)}, {}, "what was logged before the last cut"});
  const bool lives = world.start() && world.pass(5);
  if (!lives) std::cout << name << ": the daemon does not live after the cut\n";
  return world.report(name) && lives;
}

}  // namespace

bool cutPower(const World::Programs& programs, const Words& words) {
  if (words.size() > 3) {
    for (const char* const folder : {"/var/config", Simulator::Modem::storeFolder})
      std::filesystem::create_directories(folder);
    if (mount(words[2].c_str(), "/var/config", nullptr, MS_BIND, nullptr) != 0 ||
        mount(words[3].c_str(), Simulator::Modem::storeFolder, nullptr, MS_BIND, nullptr) != 0)
      std::abort();
  }
  if (words[0] == "prepare") return prepare(programs, situations.at(words[1]));
  if (words[0] == "look") return look(programs, words[1]);
  return words.size() > 5 ? runTo(programs, words[4], words[5]) : run(programs);
}
