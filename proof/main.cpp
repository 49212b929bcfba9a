// proof: looks whether the daemon loses, repeats or spoils a message, whatever disturbs it. To be run by
// scripts/proof in a private gateway; the status is 0 when nothing is wrong.
//
// The vocabulary:
//   world     a simulated gateway with the daemon in it (World)
//   ledger    knows every message of a world by its text, looks at the modem, the files and the log, and says
//   in
//             the end which are lost, twice, stray (a text that nobody wrote) or left over (Ledger)
//   fault     what went wrong in a pass; a message meets the faults of the passes that it is on its way in
//   (Fault) window    a harm that a certain fault may do to a message that meets it; docs/reliability.md
//   names them all.
//             A harm outside of every window is a failure (Windows)
//   scenario  a certain pass with something to do (Scenario)
// and the ways to disturb a pass:
//   undisturbed  not at all: what others see of it is compared with proof/undisturbed.txt (Undisturbed)
//   crash        SIGKILL at one system call of the daemon; fail: one such call fails (Points, by strace:
//   Tracer) accidents    kills, full and read-only disks, a clock set back, a spool removed (Accidents) soak
//   random faults over many passes (Soak) damage       one bit of what the daemon keeps for itself (Damage)
//   cut          the power is cut (Cut)
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include "proof/Proofs.h"
#include "proof/Scenario.h"

namespace {

bool listScenarios(const World::Programs&, const Words&) {
  for (const Scenario& scenario : scenarios) std::cout << scenario.name << "\n";
  return true;
}

struct Command {
  std::size_t words;  // at least so many
  const char* usage;
  Proof* prove;
};
const std::map<std::string, Command> commands = {
    {"scenarios", {0, "", listScenarios}},
    {"undisturbed", {0, "", showUndisturbed}},
    {"crash", {3, " SCENARIO SAMPLE SEED", crashAtCalls}},
    {"calls", {3, " SCENARIO SAMPLE SEED", failCalls}},
    {"disturb", {1, " TIMES", disturb}},
    {"soak", {3, " PASSES SEED FINDINGS", soak}},
    {"damage", {4, " SHARD SHARDS SAMPLE SEED", damage}},
    {"cut", {2, " prepare|run|look SITUATION [CONFIG MODEM [STAGE IMAGE]]", cutPower}},
};

}  // namespace

int main(int argc, char** argv) {
  const auto command = argc > 1 ? commands.find(argv[1]) : commands.end();
  const Words words(argv + std::min(argc, 2), argv + argc);
  if (command == commands.end() || words.size() < command->second.words) {
    for (const auto& [name, each] : commands) std::cerr << "usage: proof " << name << each.usage << "\n";
    return 2;
  }
  const std::filesystem::path build =
      std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
  const char* const daemon = std::getenv("VELD");
  const World::Programs programs{daemon != nullptr ? daemon : build / "daemon/veld", build / "simulator"};
  return command->second.prove(programs, words) ? EXIT_SUCCESS : EXIT_FAILURE;
}
