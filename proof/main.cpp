// proof: checks that the daemon does not lose, repeat or damage a message under faults. scripts/proof runs it
// in a private gateway; the status is 0 when nothing is wrong. Proofs.h lists the proofs.
//
// The terms:
//   world: a simulated gateway with the daemon in it (World)
//   ledger: records every message of a world by its text, reads the modem, the files and the log, and reports
//     lost, repeated, stray (a text that nobody sent) and left-over ones at the end (Ledger)
//   fault: what went wrong in a pass; a message on its way meets the faults of each pass (Windows)
//   window: a known fault that can still harm a message; any other harm is a failure (Windows)
//   scenario: a particular pass with messages to process (Scenario)
#include <algorithm>
#include <cstdlib>

#include "proof/Proofs.h"

namespace {
struct Command {
  std::size_t words;  // at least so many
  const char* usage;
  Proof* prove;
};
const std::map<std::string, Command> commands = {
    {"scenarios", {0, "", listScenarios}},
    {"undisturbed", {0, "", showUndisturbed}},
    {"crash", {3, " SCENARIO SAMPLE SEED [DEVICE IMAGE]", crashAtCalls}},
    {"calls", {3, " SCENARIO SAMPLE SEED", failCalls}},
    {"disturb", {1, " TIMES", disturb}},
    {"soak", {3, " PASSES SEED FINDINGS", soak}},
    {"damage", {4, " SCENARIO NUMBER SAMPLE SEED", damage}},
};
}  // namespace

int main(int argc, char** argv) {
  const auto command = argc > 1 ? commands.find(argv[1]) : commands.end();
  const Words words(argv + std::min(argc, 2), argv + argc);
  if (command == commands.end() || words.size() < command->second.words) {
    for (const auto& [name, each] : commands) std::cerr << "usage: proof " << name << each.usage << "\n";
    return 2;
  }
  return command->second.prove(words) ? EXIT_SUCCESS : EXIT_FAILURE;
}
