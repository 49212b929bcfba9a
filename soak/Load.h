#pragma once

#include <random>
#include <string>
#include <vector>

#include "simulator/gateway/Gateway.h"
#include "soak/Ledger.h"

/// Random messages, in and out, each entered into the ledger.
class Load {
 public:
  static constexpr char refusedNumber[] = "+4917099000";

  Load(Simulator::Gateway& gateway, Ledger& ledger, std::mt19937& random)
      : gateway_(gateway), ledger_(ledger), random_(random) {}

  /// What happens between two passes: up to two messages come in, whole or in parts, and one may be queued.
  void add();

  /// The parts that were held back come in.
  void release();

  void receiveText();

 private:
  unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
  struct Part {
    std::string userData;
    unsigned number, first, count;
    unsigned passes;  ///< that it still waits
  };
  void deliver(const Part& part);
  void receiveCommand();
  void receiveParts();
  void queue();

  Simulator::Gateway& gateway_;
  Ledger& ledger_;
  std::mt19937& random_;
  unsigned reference_ = 0;
  std::vector<Part> late_;
};
