#include <algorithm>
#include <filesystem>
#include <iostream>
#include <numeric>

#include "proof/Proofs.h"
#include "proof/Scenario.h"

namespace {
constexpr unsigned limit = 150;         // messages kept in each of inbox and outbox
constexpr unsigned settlingLife = 500;  // passes, after which memory must not grow
constexpr std::size_t growthKilobytes = 256;

// Random messages, in and out.
class Load {
 public:
  explicit Load(World& world) : world_(world) {}

  // Before a pass: receives up to two messages, whole or in parts, and may queue one.
  void add() {
    for (unsigned left = world_.below(3); left > 0; --left) {
      const unsigned kind = world_.below(10);
      if (kind < 5)
        world_.receive(text("Text") + std::string(world_.below(100), '.') + "\n");
      else if (kind < 7)
        world_.receive("p secret #ping " + std::to_string(++texts_) + " 3",
                       world_.below(2) == 0 ? World::friendly : World::stranger);
      else
        receiveParts();
    }
    if (world_.below(3) == 0)
      world_.queue(text("Out"), world_.below(4) == 0 ? World::refused : World::other, world_.below(3));
    deliver();
  }

  // Before a pass: delivers the parts that arrive late.
  void deliver() {
    for (const auto& [message, part] : late_[pass_]) world_.deliver(message, part);
    late_.erase(pass_++);
  }

 private:
  std::string text(const std::string& what) { return what + " =" + std::to_string(++texts_) + "="; }

  // All parts have the same length, so that each text is known; they arrive in any order.
  void receiveParts() {
    const unsigned count = 2 + world_.below(3);
    const std::string number = std::to_string(100'000 + ++texts_);
    std::string whole;
    for (unsigned part = 1; part <= count; ++part)
      whole += "part " + std::to_string(part) + " of " + number + ". ";
    const std::size_t message = world_.enter(whole, World::friendly, count);
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), world_.random);
    for (const std::size_t part : order) late_[pass_ + world_.below(4)].emplace_back(message, part);
  }

  World& world_;
  unsigned texts_ = 0, pass_ = 0;
  // The message and the number of each part, by the pass before which it arrives.
  std::map<unsigned, std::vector<std::pair<std::size_t, std::size_t>>> late_;
};

void emptyLogs() {
  for (const char* const log : {Simulator::SyslogServer::logFile, "/var/log/veld.log"})
    if (std::filesystem::exists(log)) std::filesystem::resize_file(log, 0);
}

// Disturbs every fifth pass, and with `deadly` also by faults that end the daemon.
void live(World& world, const std::string& life, unsigned passes, bool deadly) {
  for (unsigned pass = 1; world.lives && pass <= passes; ++pass) {
    if (world.below(100) < 80) {
      world.pass();
    } else {
      const auto& suitable = deadly && world.below(4) != 0 ? lethal : survived;
      const auto& [name, steps] = suitable[world.below(static_cast<unsigned>(suitable.size()))];
      world.run(steps, name);
    }
    if (pass % 50 == 0) emptyLogs();
    if (pass % 500 == 0 || pass == passes || !world.lives)
      std::cout << life << ": pass " << pass << " of " << passes << ", " << world.ledger.entered()
                << " messages, " << world.ledger.underWay() << " under way, "
                << world.daemon().footprint().text() << std::endl;
  }
}

// What the daemon uses when no message waits. Logging a message makes it reconnect to syslog.
Simulator::Footprint footprintOf(World& world) {
  world.receive("the message after pass " + std::to_string(world.ledger.entered()));
  world.pass(2);
  const Simulator::Footprint footprint = world.daemon().footprint();
  std::cout << "At rest: " << footprint.text() << std::endl;
  return footprint;
}

// Whether one daemon leaks neither memory nor descriptors.
bool liveOnce(World& world, unsigned passes) {
  const unsigned settling = std::min(settlingLife, passes / 2);
  live(world, "One life", settling, false);
  const Simulator::Footprint before = footprintOf(world);
  live(world, "One life", passes - settling, false);
  const Simulator::Footprint after = footprintOf(world);
  const bool clean = after.resident <= before.resident + growthKilobytes &&
                     after.descriptors == before.descriptors && after.children == 0;
  if (!clean) std::cout << "Something is left over.\n";
  return clean;
}
}  // namespace

bool soak(const Words& words) {
  const unsigned passes = numberOf(words[0]);
  World world(limit);
  Load load(world);
  world.random.seed(numberOf(words[1]));
  world.beforePass = [&load] { load.add(); };
  if (!world.gateway().settings.setTimings("[10,20,30]")) std::abort();
  world.start();
  const bool clean = liveOnce(world, passes);
  live(world, "Many lives", passes / 4, true);
  world.beforePass = [&load] { load.deliver(); };
  world.pass(50);  // long enough for the retries of the last failed messages
  world.stop();
  if (!world.lives) std::cout << "The daemon ended or hung: " << world.daemon().ending() << "\n";
  const bool good = world.report("soak", words[2]);
  return world.lives && good && clean;
}
