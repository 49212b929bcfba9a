#pragma once

#include <functional>
#include <random>
#include <string>

#include "simulator/gateway/Gateway.h"
#include "soak/Ledger.h"

/// Runs the daemon's passes, each with what goes wrong in it, chosen at random. The ledger looks on after
/// each.
class Chaos {
 public:
  Chaos(Simulator::Gateway& gateway, Ledger& ledger, std::mt19937& random)
      : gateway_(gateway), ledger_(ledger), random_(random) {}

  /// Whether the daemon is ended at random, too.
  void setLethal(bool lethal) { lethal_ = lethal; }

  /// Starts the daemon, for its first pass. False, with the reason in problem(), when it does not run; so are
  /// the following.
  [[nodiscard]] bool start(unsigned faults = 0);
  /// One pass, and mostly nothing goes wrong in it.
  [[nodiscard]] bool pass();
  /// One pass in which nothing does.
  [[nodiscard]] bool quietPass();

  const std::string& problem() const { return problem_; }
  unsigned ends() const { return ends_; }  ///< of a daemon

 private:
  unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
  void breakForAWhile();
  void breakTool();
  void repair();
  bool runPass();
  bool passThatHangs();
  void cutListing();
  bool look(unsigned faults);
  bool stopAndRestart(unsigned faults);
  bool terminate();
  bool kill();
  bool spoilWhitelist();
  bool restart();
  void waitInsidePass();
  bool fail(const std::string& problem);

  Simulator::Gateway& gateway_;
  Ledger& ledger_;
  std::mt19937& random_;
  bool lethal_ = false;
  unsigned faults_ = 0;      ///< at work now (Fault)
  unsigned passesLeft_ = 0;  ///< until they are repaired
  unsigned ends_ = 0;
  unsigned passMicroseconds_ = 20000;  ///< that the last ordinary pass took
  std::string problem_;
};
