#include "faults/Accidents.h"

#include <sys/mount.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace {

using Simulator::MessageFolders;

void receiveSome(Trial& trial, const std::string& what, unsigned count) {
  for (unsigned i = 1; i <= count; ++i) trial.receive(what + " " + std::to_string(i));
}

void queueSome(Trial& trial, const std::string& what, unsigned count) {
  for (unsigned i = 1; i <= count; ++i) trial.queue(what + " " + std::to_string(i));
}

// SIGKILL at a moment of a pass with messages, and a new daemon, again and again.
bool killOften(Trial& trial) {
  std::mt19937 random(1);
  for (unsigned kill = 1; kill <= 20; ++kill) {
    receiveSome(trial, "before kill " + std::to_string(kill) + ":", 20);
    trial.gateway().clock.grant();
    usleep(20'000 + static_cast<unsigned>(random() % 400'000));
    trial.daemon().signal(SIGKILL);
    if (!trial.awaitEnd()) return false;
    trial.allowListedAgain();
    if (!trial.start()) return false;
  }
  return true;
}

bool fill(Trial& trial, Simulator::Disk& disk) {
  receiveSome(trial, "while it is full", 20);
  queueSome(trial, "goes out while it is full", 5);
  if (!disk.fill()) return false;
  const bool passed = trial.pass(3);
  disk.free();
  return passed;
}

bool fillVar(Trial& trial) { return fill(trial, trial.gateway().var); }
bool fillTmp(Trial& trial) { return fill(trial, trial.gateway().tmp); }

bool makeReadOnly(Trial& trial) {
  queueSome(trial, "waits while nothing can be written", 5);
  receiveSome(trial, "comes while nothing can be written", 5);
  if (mount(MessageFolders::root, MessageFolders::root, nullptr, MS_BIND, nullptr) != 0 ||
      mount(nullptr, MessageFolders::root, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
    return false;
  const bool passed = trial.pass(5);
  return umount2(MessageFolders::root, MNT_DETACH) == 0 && passed;
}

// The same second comes again, and with it the same guid.
bool setClockBack(Trial& trial) {
  const std::time_t now = trial.gateway().clock.now();
  for (const char* const text : {"the first", "the second", "the third"}) {
    trial.gateway().clock.set(now);
    trial.receive(text);
    if (!trial.pass()) return false;
  }
  return true;
}

struct Accident {
  const char* name;
  bool (*happens)(Trial&);
  unsigned messages;
};

constexpr Accident accidents[] = {
    {"20 kills", killOften, 400},          {"/var full", fillVar, 25},          {"/tmp full", fillTmp, 25},
    {"store read-only", makeReadOnly, 10}, {"clock set back", setClockBack, 3},
};

}  // namespace

bool tryAccidents(const Trial::Programs& programs) {
  constexpr unsigned noLimit = 100'000;
  constexpr unsigned settlingPasses = 4;
  bool good = true;
  for (const Accident& accident : accidents) {
    Trial trial(programs, noLimit);
    const bool lived = trial.start() && accident.happens(trial) && trial.pass(settlingPasses);
    Verdict verdict = trial.look(true);
    if (!lived) verdict.harms.insert("hang: or it could not be tried");
    good = good && verdict.harms.empty();
    for (const std::string& harm : verdict.harms) std::cout << accident.name << ": " << harm << std::endl;
    for (const auto& [kind, lines] :
         {std::pair("", &verdict.harms), std::pair(" in a window", &verdict.windows)})
      for (const std::string& line : *lines)
        std::cout << "\t" << accident.name << "\t" << line.substr(0, line.find(':')) << kind << std::endl;
    for (unsigned i = 0; i < accident.messages; ++i) std::cout << "\t" << accident.name << "\ttried\n";
  }
  return good;
}
