#pragma once

#include <string>
#include <vector>

#include "proof/World.h"

// What is proven, each by one program run; main.cpp explains the words. Each prints what is wrong, and
// counts; false when something is wrong. The words are those of the command line, whose number main() has
// checked.
using Words = std::vector<std::string>;
inline unsigned numberOf(const std::string& word) { return static_cast<unsigned>(std::stoul(word)); }
using Proof = bool(const World::Programs& programs, const Words& words);

/// Prints what an undisturbed pass of each scenario shows: the shell's commands, the log lines and the
/// requests in their order, and then the files. Dates and guids are replaced.
Proof showUndisturbed;
/// SCENARIO SAMPLE SEED: kills the daemon at each system call of a pass, or at SAMPLE of them, and starts it
/// anew.
Proof crashAtCalls;
/// SCENARIO SAMPLE SEED: lets each of these calls fail once, with each error that is plausible for it.
Proof failCalls;
/// TIMES: each disturbance so often, in a world of its own, with a fixed load.
Proof disturb;
/// PASSES SEED FINDINGS: random load and disturbances. One daemon lives through PASSES passes; then daemons
/// are ended as well, in a quarter as many disturbances. All that is known of a message that was harmed
/// outside of every window is written to the file FINDINGS.
Proof soak;
/// SHARD SHARDS SAMPLE SEED: turns each bit of what the daemon keeps for itself, one at a time, and cuts each
/// file at each byte, or tries SAMPLE of these. The daemon has to live on, to set the damaged file aside with
/// a line that names it, and to bring to its end every message that the file does not hold.
Proof damage;
/// prepare|run|look SITUATION [CONFIG MODEM [STAGE IMAGE]]: a power cut in three steps, each a process of its
/// own on disks that outlive it. `prepare` brings the disks to where the daemon is about to start, `run`
/// starts it and waits for the cut, `look` starts it again and prints what became of the messages. CONFIG and
/// MODEM are folders to be found at /var/config and at the modem's store. With a STAGE of the tool (unread,
/// read, delete, deleted, send, sent), `run` goes as far as that, copies the IMAGE of CONFIG's disk as a
/// power cut would leave it, and ends.
Proof cutPower;
