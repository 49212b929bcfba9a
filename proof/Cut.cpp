// cut prepare SITUATION: sets up the disks for the daemon's start
// cut run SITUATION [MILLISECONDS]: starts the daemon, and cuts the power of the machine after so long;
// without
//   that prints how long the first pass takes
// cut look SITUATION: restarts the daemon, and prints what happened to the messages
// Each step is a process of its own, on disks that persist. Two more words, CONFIG and MODEM, are the folders
// to mount at /var/config and at the modem's store. With a STAGE of the tool (unread, read, delete, deleted,
// send, sent) and the IMAGE of CONFIG's disk, `run` stops there, copies the image as a power cut would leave
// it, and ends: cut run SITUATION CONFIG MODEM STAGE IMAGE.
#include <sys/mount.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>

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

// Enters the messages, and delivers them part by part.
void enter(World& world, const Situation& situation, const std::function<void()>& beforeEachPart) {
  std::vector<std::size_t> messages(situation.incoming);
  for (unsigned i = 0; i < situation.incoming; ++i)
    messages[i] = world.enter("a text whose end is " + std::to_string(i), World::other, situation.parts);
  for (unsigned part = 0; part < situation.parts; ++part) {
    beforeEachPart();
    for (const std::size_t message : messages) world.deliver(message, part);
  }
  for (unsigned i = 0; i < situation.outgoing; ++i)
    world.queue("a queued text whose end is " + std::to_string(i));
}

bool prepare(const Situation& situation) {
  World world(limit);
  enter(world, situation, [&world] {
    world.start();
    world.stop();
  });
  return world.lives;
}

bool measure() {
  World world(World::Continued{limit});
  const auto begin = std::chrono::steady_clock::now();
  world.start();
  const auto took = std::chrono::steady_clock::now() - begin;
  std::cout << "took " << std::chrono::duration_cast<std::chrono::milliseconds>(took).count() << std::endl;
  return world.lives;
}

// Resets the machine at once, without writing what the kernel holds; after the first pass for "filed".
[[noreturn]] void runFor(const std::string& situation, unsigned milliseconds) {
  World world(World::Continued{limit});
  const bool started = world.daemon().start().empty();
  if (started && situation == "filed") world.awaitSleep();
  usleep(milliseconds * 1000);
  std::ofstream("/proc/sysrq-trigger") << "b" << std::flush;
  std::abort();
}

// For the stages after the tool's work, the tool hangs before it, and the proof does that work itself.
bool runTo(const std::string& stage, const std::string& image) {
  const std::map<std::string, std::string> doneBy = {{"deleted", "delete"}, {"sent", "send"}};
  const auto done = doneBy.find(stage);
  const std::string operation = done == doneBy.end() ? stage : done->second;
  World world(World::Continued{limit});
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

bool look(const std::string& name) {
  World world(World::Continued{limit});
  world.gateway().modem.clearFaults();
  enter(world, situations.at(name), [] {});
  world.look("the power is back");
  world.ledger.died();
  world.ledger.observe({Fault::None, {Simulator::readFile(logs)}, {}, "what was logged before the last cut"});
  world.start();
  world.pass(5);
  if (!world.lives) std::cout << name << ": the daemon does not live after the cut\n";
  return world.report(name) && world.lives;
}

void mountAt(const std::string& target, const std::string& folder) {
  std::filesystem::create_directories(target);
  if (mount(folder.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) != 0) std::abort();
}

}  // namespace

bool cutPower(const Words& words) {
  const std::string &step = words[0], &situation = words[1];
  if (words.size() > 3) {
    mountAt("/var/config", words[2]);
    mountAt(Simulator::Modem::storeFolder, words[3]);
  }
  if (step == "prepare") return prepare(situations.at(situation));
  if (step == "look") return look(situation);
  if (words.size() > 5) return runTo(words[4], words[5]);
  if (words.size() == 3) runFor(situation, numberOf(words[2]));
  return measure();
}
