#include <algorithm>
#include <filesystem>
#include <iostream>

#include "proof/Disturbances.h"
#include "proof/Proofs.h"

namespace {

constexpr unsigned limit = 150;           // messages kept in each of inbox and outbox
constexpr unsigned settlingPasses = 500;  // afterwards memory must not grow
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
    deliver(false);
  }

  // Delivers the parts that have waited long enough, or all of them.
  void deliver(bool all) {
    const auto waits = std::stable_partition(late_.begin(), late_.end(),
                                             [all](const Late& late) { return all || late.passes == 0; });
    std::for_each(late_.begin(), waits,
                  [this](const Late& late) { world_.deliver(late.message, late.part); });
    late_.erase(late_.begin(), waits);
    for (Late& late : late_) --late.passes;
  }

 private:
  struct Late {
    unsigned message;
    std::size_t part;
    unsigned passes;  // to wait
  };

  std::string text(const std::string& what) { return what + " =" + std::to_string(++texts_) + "="; }

  // All parts have the same length, so that each text is known; they arrive in any order.
  void receiveParts() {
    const unsigned count = 2 + world_.below(3);
    const std::string number = std::to_string(100'000 + ++texts_);
    std::string whole;
    for (unsigned part = 1; part <= count; ++part)
      whole += "part " + std::to_string(part) + " of " + number + ". ";
    const unsigned message = world_.enter(whole, World::friendly, count);
    for (std::size_t part = 0; part < count; ++part) late_.push_back({message, part, world_.below(4)});
    std::shuffle(late_.end() - count, late_.end(), world_.random);
  }

  World& world_;
  unsigned texts_ = 0;
  std::vector<Late> late_;
};

class Soak {
 public:
  Soak(const World::Programs& programs, unsigned seed) : world_(programs, limit) {
    world_.random.seed(seed);
    world_.beforePass = [this] { load_.add(); };
    if (!world_.gateway().settings.setTimings("[10,20,30]")) std::abort();
  }

  bool run(unsigned passes, const std::string& details) {
    const bool lived = world_.start() && liveOnce(passes) && live("Many lives", passes / 4, true) && drain();
    if (!lived) std::cout << "The daemon ended or hung: " << world_.daemon().ending() << "\n";
    const bool good = world_.report("soak", details);
    std::cout << "| Window | Messages that met the fault |\n|---|---|\n";
    for (const Window& window : windows)
      if (const unsigned exposed = world_.ledger.exposedTo(window); exposed > 0)
        std::cout << "| " << window.name << " | " << exposed << " |\n";
    return lived && good && !leftOver_;
  }

 private:
  bool live(const char* what, unsigned passes, bool lethal) {
    bool lives = true;
    for (unsigned pass = 1; lives && pass <= passes; ++pass) {
      lives = world_.below(100) < 80 ? world_.pass() : disturb(lethal && world_.below(4) != 0);
      if (pass % 50 == 0) emptyLogs();
      if (pass % 500 == 0 || pass == passes || !lives)
        std::cout << what << ": pass " << pass << " of " << passes << ", " << world_.ledger.entered()
                  << " messages, " << world_.ledger.underWay() << " under way, "
                  << world_.daemon().footprint().text() << std::endl;
    }
    return lives;
  }

  bool disturb(bool lethal) {
    std::vector<const Disturbance*> suitable;
    for (const Disturbance& each : disturbances)
      if (each.lethal == lethal) suitable.push_back(&each);
    const Disturbance& chosen = *suitable[world_.below(static_cast<unsigned>(suitable.size()))];
    return chosen.happens(world_, chosen.detail);
  }

  static void emptyLogs() {
    for (const char* const log : {Simulator::SyslogServer::logFile, "/var/log/veld.log"})
      if (std::filesystem::exists(log)) std::filesystem::resize_file(log, 0);
  }

  bool liveOnce(unsigned passes) {
    const unsigned settling = std::min(settlingPasses, passes / 2);
    if (!live("One life", settling, false) || !settle()) return false;
    const Simulator::Footprint before = world_.daemon().footprint();
    if (!live("One life", passes - settling, false) || !settle()) return false;
    const Simulator::Footprint after = world_.daemon().footprint();
    std::cout << "After " << settling << " passes: " << before.text() << "\nAfter " << passes
              << " passes: " << after.text() << std::endl;
    leftOver_ = after.resident > before.resident + growthKilobytes ||
                after.descriptors != before.descriptors || after.children > 0;
    if (leftOver_) std::cout << "Something is left over.\n";
    return true;
  }

  // Files the waiting messages. Logging a message makes the daemon reconnect to syslog.
  bool settle() {
    world_.receive("the message after pass " + std::to_string(world_.ledger.entered()));
    return world_.pass(2);
  }

  // Long enough for the retries of the last failed messages.
  bool drain() {
    world_.beforePass = [] {};
    load_.deliver(true);
    return world_.pass(50) && world_.stop();
  }

  World world_;
  Load load_{world_};
  bool leftOver_ = false;  // after the life of the one daemon
};

}  // namespace

bool soak(const World::Programs& programs, const Words& words) {
  return Soak(programs, numberOf(words[1])).run(numberOf(words[0]), words[2]);
}
