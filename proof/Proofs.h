#pragma once

#include <algorithm>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "proof/World.h"

// The proofs; main.cpp explains the terms. Each prints the failures and counts, and returns false when there
// is a failure. The words are the command line's arguments; main() has checked their number.
using Words = std::vector<std::string>;
using Proof = bool(const Words& words);
inline unsigned numberOf(const std::string& word) { return static_cast<unsigned>(std::stoul(word)); }

/// Tries all points, or a random choice of `sample` of them if it is not 0. Prints each harm outside every
/// window with the name of its point, and counts. False if there is such a harm.
template <typename Point>
bool tryAll(const std::string& what, std::vector<Point> points, const std::string& sample,
            const std::string& seed, const std::function<Findings(const Point&)>& tryOne) {
  if (const std::size_t count = numberOf(sample); count != 0) {
    std::shuffle(points.begin(), points.end(), std::mt19937(numberOf(seed)));
    points.resize(std::min(points.size(), count));
  }
  std::map<std::string, unsigned> counts;
  for (const Point& point : points) {
    const Findings findings = tryOne(point);
    std::string kind = findings.empty() ? "clean" : "in a window";
    for (const Ledger::Finding& finding : findings) {
      if (finding.window != nullptr) continue;
      kind = "harmful";
      std::cout << what << ", " << point.name() << ": " << finding.text << std::endl;
    }
    ++counts[kind];
  }
  std::cout << what << ": " << points.size() << " points tried";
  for (const auto& [kind, number] : counts) std::cout << ", " << number << " " << kind;
  std::cout << std::endl;
  return !points.empty() && counts.count("harmful") == 0;
}

Proof listScenarios, showUndisturbed;  ///< print the scenarios; the effects of passes without faults
Proof crashAtCalls, failCalls;         ///< end the daemon, or the power, at a system call; make the call fail
Proof disturb, soak;                   ///< each disturbance by itself; random load and disturbances
/// Damages a note. The daemon must continue to run, set the file aside with a log line that names it, and
/// complete every message that the file does not hold.
Proof damage;
