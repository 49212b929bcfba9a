#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "proof/World.h"

// The proofs; main.cpp explains the terms. Each prints the failures and counts, and returns false when there
// is a failure. The words are the command line's arguments; main() has checked their number.
using Words = std::vector<std::string>;
using Proof = bool(const Words& words);
inline unsigned numberOf(const std::string& word) { return static_cast<unsigned>(std::stoul(word)); }
constexpr unsigned settlingPasses = 4;  // enough for a retry after a restart

/// All points, or a random choice of `count` of them; 0: all.
template <typename Point>
std::vector<Point> sampleOf(std::vector<Point> points, std::size_t count, std::mt19937& random) {
  if (count == 0) return points;
  std::shuffle(points.begin(), points.end(), random);
  points.resize(std::min(points.size(), count));
  return points;
}

Proof listScenarios;
Proof showUndisturbed;  ///< prints what passes without faults do, with dates and guids replaced
/// SCENARIO SAMPLE SEED: kills the daemon at each system call of a pass, and restarts it. With a loop DEVICE
/// and the IMAGE of its ext4 file system, cuts the power instead.
Proof crashAtCalls;
Proof failCalls;  ///< SCENARIO SAMPLE SEED: makes each of these calls fail, with each plausible error
Proof disturb;    ///< TIMES: runs each disturbance TIMES times, in a world of its own, with a fixed load
/// PASSES SEED FINDINGS: random load and disturbances. One daemon runs for PASSES passes; then lethal
/// disturbances follow, too, a quarter as many in all. The file FINDINGS gets the history of each message
/// that was harmed outside every window.
Proof soak;
/// SHARD SHARDS SAMPLE SEED: flips each bit of the spool files, one at a time, and truncates each file at
/// each byte. The daemon must continue to run, set the damaged file aside with a log line that names it, and
/// complete every message that the file does not hold.
Proof damage;
