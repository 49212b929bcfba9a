#include <fstream>

#include "proof/Proofs.h"
#include "proof/Scenario.h"
#include "simulator/support/Files.h"

namespace {
// Flips a bit of a file, or truncates the file.
struct Damage {
  std::string path;
  std::size_t at;  // byte
  unsigned bit;
  static constexpr unsigned truncate = 8;  // instead of a bit

  std::string name() const {
    return "byte " + std::to_string(at) + (bit == truncate ? ", the end" : ", bit " + std::to_string(bit));
  }
  std::string applyTo(std::string content) const {
    if (bit == truncate) return content.substr(0, at);
    content[at] = static_cast<char>(content[at] ^ (1 << bit));
    return content;
  }
};

Findings tryOne(const Scenario& scenario, const Damage& damage) {
  World world = scenario.prepare();
  const std::string whole = Simulator::readFile(damage.path), damaged = damage.applyTo(whole);
  const std::string aside = damage.path + ".damaged";
  std::ofstream(damage.path, std::ios::binary) << damaged;
  world.ledger.met(Fault::Damaged, &whole);
  world.start();
  Findings findings;
  for (const Ledger::Finding& finding : world.liveOn())
    if (finding.text != "left: " + aside) findings.push_back(finding);
  if (Simulator::readFile(aside) != damaged) findings.push_back({"left: the file is not set aside"});
  for (const auto& line : world.gateway().syslog.lines())
    if (line.text.find(aside.substr(aside.rfind('/') + 1)) != std::string::npos) return findings;
  findings.push_back({"unnamed: no line of the log names the file"});
  return findings;
}
}  // namespace

bool damage(const Words& words) {
  const Scenario& scenario = Scenario::named(words[0]);
  const World world = scenario.prepare();
  const std::string path = World::ownFiles().at(numberOf(words[1]));
  std::vector<Damage> damages;
  for (std::size_t at = 0; at < Simulator::readFile(path).size(); ++at)
    for (unsigned bit = 0; bit <= Damage::truncate; ++bit) damages.push_back({path, at, bit});
  return tryAll<Damage>(path, damages, words[2], words[3],
                        [&](const Damage& one) { return tryOne(scenario, one); });
}
