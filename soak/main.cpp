// veld-soak PASSES SEED: the daemon in a private gateway under random load and faults, with a ledger of every
// message. First one daemon lives through PASSES passes with everything but its own death; then daemons are
// ended at random for a quarter as many. The status is 0 when no message was lost or repeated outside of the
// windows that the design leaves open, and nothing was left over.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "simulator/support/Files.h"
#include "soak/Chaos.h"
#include "soak/Ledger.h"
#include "soak/Load.h"

namespace {

constexpr unsigned settlingPasses = 100;  // after them, memory no longer grows
constexpr std::size_t growthKilobytes = 256;
constexpr unsigned limit = 150;  // messages kept in each of inbox and outbox

class Soak {
 public:
  Soak(const std::string& buildFolder, unsigned seed)
      : random_(seed), gateway_({buildFolder + "/daemon/veld", buildFolder + "/simulator", true}) {
    gateway_.settings.set("receivedLimit", limit);
    gateway_.settings.set("sentLimit", limit);
    gateway_.modem.setRefused(Load::refusedNumber, true);
    if (!gateway_.settings.setTimings("[10,20,30]")) std::abort();
  }

  bool run(unsigned passes) {
    const bool ran = chaos_.start() && liveOnce(passes) && liveManyTimes(passes / 4) && drain();
    std::vector<std::string> bodies;
    for (const auto& request : gateway_.api.requests()) bodies.push_back(request.body);
    return ran && ledger_.settle(std::cout, gateway_.modem.sent(), bodies) && isClean_;
  }

  const std::string& problem() const { return chaos_.problem(); }

 private:
  bool passes(const char* what, unsigned first, unsigned last) {
    for (unsigned pass = first; pass <= last; ++pass) {
      load_.add();
      if (!chaos_.pass()) return false;
      if (pass % 50 == 0) tidy();
      if (pass % 500 == 0 || pass == last)
        std::cout << what << ": pass " << pass << " of " << last << ", " << ledger_.entered() << " messages, "
                  << ledger_.underWay() << " under way, " << ledger_.lost() << " lost, " << chaos_.ends()
                  << " daemons ended" << std::endl;
    }
    return true;
  }

  // What the system and a person who looks after the gateway would do: empty the logs, and clear away what a
  // full disk has left behind. A file that cannot be read is reported whenever its folder is, for ever.
  static void tidy() {
    namespace fs = std::filesystem;
    for (const char* const log : {"/var/log/syslog", "/var/log/veld.log"})
      if (fs::exists(log)) fs::resize_file(log, 0);
    for (const fs::directory_entry& staged : fs::directory_iterator("/tmp/sms")) fs::remove(staged);
    for (const char* const box : Simulator::MessageFolders::boxes) {
      for (const std::string& name : Simulator::listFolder(Simulator::MessageFolders::pathOf(box))) {
        const std::string path = Simulator::MessageFolders::pathOf(box) + "/" + name;
        Json::Value record;
        if (!Simulator::readJson(Simulator::readFile(path), record)) fs::remove(path);
      }
    }
  }

  // What waits in the journal is filed in two passes, which closes that; a message is logged, which opens
  // syslog again where it was closed.
  bool settle() {
    load_.receiveText();
    return chaos_.quietPass() && chaos_.quietPass();
  }

  bool liveOnce(unsigned count) {
    if (!passes("One life", 1, settlingPasses) || !settle()) return false;
    const Simulator::Footprint before = gateway_.daemon.footprint();
    if (!passes("One life", settlingPasses + 1, count) || !settle()) return false;
    const Simulator::Footprint after = gateway_.daemon.footprint();
    std::cout << "After " << settlingPasses << " passes: " << before.text() << "\nAfter " << count
              << " passes: " << after.text() << std::endl;
    isClean_ = after.resident <= before.resident + growthKilobytes &&
               after.descriptors == before.descriptors && after.children == 0;
    if (!isClean_) std::cout << "Something is left over." << std::endl;
    return true;
  }

  bool liveManyTimes(unsigned count) {
    chaos_.setLethal(true);
    return passes("Many lives", 1, count);
  }

  // Until every message has been filed, or given up: the retries of the last failed ones take some passes.
  bool drain() {
    load_.release();
    for (unsigned pass = 0; pass < 50; ++pass)
      if (!chaos_.quietPass()) return false;
    return gateway_.daemon.stop();
  }

  bool isClean_ = true;  ///< nothing is left over from the one life
  std::mt19937 random_;
  Simulator::Gateway gateway_;
  Ledger ledger_;
  Load load_{gateway_, ledger_, random_};
  Chaos chaos_{gateway_, ledger_, random_};
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: private-gateway veld-soak PASSES SEED\n";
    return 2;
  }
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
  Soak soak(program.parent_path().parent_path(), static_cast<unsigned>(std::stoul(argv[2])));
  const bool good = soak.run(static_cast<unsigned>(std::stoul(argv[1])));
  if (!soak.problem().empty()) std::cout << soak.problem() << "\n";
  std::cout << (good ? "PASS" : "FAIL") << ": seed " << argv[2] << std::endl;
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
