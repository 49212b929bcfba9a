#pragma once

#include <string>
#include <vector>

#include "proof/World.h"

// The proofs; main.cpp explains the terms. Each prints the failures and counts, and returns false when there
// is a failure. The words are the command line's arguments; main() has checked their number.
using Words = std::vector<std::string>;
inline unsigned numberOf(const std::string& word) { return static_cast<unsigned>(std::stoul(word)); }
using Proof = bool(const World::Programs& programs, const Words& words);

/// Prints the trace of an undisturbed pass of each scenario: the shell's commands, the log lines and the
/// requests in order, and then the files. Dates and guids are replaced.
Proof showUndisturbed;
/// SCENARIO SAMPLE SEED: kills the daemon at each system call of a pass, or at SAMPLE of them; restarts it.
Proof crashAtCalls;
/// SCENARIO SAMPLE SEED: makes each of these calls fail once, with each plausible error.
Proof failCalls;
/// TIMES: runs each disturbance TIMES times, each in a separate world, with a fixed load.
Proof disturb;
/// PASSES SEED FINDINGS: random load and disturbances. One daemon runs for PASSES passes; then lethal
/// disturbances follow, too, a quarter as many in all. The file FINDINGS gets the history of each message
/// that was harmed outside every window.
Proof soak;
/// SHARD SHARDS SAMPLE SEED: flips each bit of the spool files, one at a time, and truncates each file at
/// each byte, or tries SAMPLE of these. The daemon must continue to run, set the damaged file aside with a
/// log line that names it, and complete every message that the file does not hold.
Proof damage;
/// prepare|run|look SITUATION [CONFIG MODEM [STAGE IMAGE]]: a power cut in three steps, each a separate
/// process on disks that persist. `prepare` sets up the disks for the daemon's start, `run` starts it and
/// waits for the cut, `look` restarts it and prints what happened to the messages. CONFIG and MODEM are the
/// folders to mount at /var/config and at the modem's store. With a STAGE of the tool (unread, read, delete,
/// deleted, send, sent), `run` stops there, copies the IMAGE of CONFIG's disk as a power cut would leave it,
/// and ends.
Proof cutPower;
