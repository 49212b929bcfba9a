#include <filesystem>
#include <sstream>

#include "simulator/gateway/MessageFolders.h"
#include "simulator/modem/Modem.h"
#include "soak/Fault.h"
#include "soak/Ledger.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"

namespace {

using Kind = Ledger::Kind;

// Plays the daemon, well or badly, between two looks of the ledger.
class World {
 public:
  explicit World(unsigned fault) : fault_(fault) {}
  ~World() {
    for (const char* folder : {Simulator::Modem::storeFolder, Simulator::MessageFolders::root})
      std::filesystem::remove_all(folder);
  }

  unsigned arrive(Kind kind = Kind::Text) {
    const unsigned number = ledger.newNumber();
    modem.receive("+49", Ledger::token(number));
    ledger.enterIncoming(number, kind);
    return number;
  }
  void take() {
    modem.markRead();
    EXPECT_TRUE(modem.deleteRead());
  }
  void put(const std::string& box, const std::string& guid, const std::string& texts) {
    writeFile(Simulator::MessageFolders::pathOf(box) + "/" + guid, R"({"message": ")" + texts + "\"}");
  }
  unsigned queue(bool isRefused = false) {
    const unsigned number = ledger.newNumber();
    put("sending", "1", Ledger::token(number));
    ledger.enterQueued(number, "1", isRefused);
    return number;
  }
  void file(const std::string& box) {
    remove((Simulator::MessageFolders::pathOf("sending") + "/1").c_str());
    if (!box.empty()) put(box, "1", "");
  }
  void send(unsigned number) { modem.send("+49", Ledger::token(number)); }
  void look() { ledger.observe(fault_); }
  std::string settle() {
    look();
    std::ostringstream report;
    return ledger.settle(report, modem.sent(), bodies) ? "" : report.str();
  }

  Simulator::Modem modem{Simulator::Modem::storeFolder};
  Ledger ledger;
  std::vector<std::string> bodies;

 private:
  unsigned fault_;
};

void receive(World& world, Kind kind, unsigned filings) {
  const std::string token = Ledger::token(world.arrive(kind));
  world.take();
  for (unsigned i = 0; i < filings; ++i) world.put("received", std::to_string(i), token);
}
void post(World& world, Kind kind, unsigned times) {
  receive(world, kind, 1);
  world.bodies.assign(times, Ledger::token(1));
}
void receiveTwo(World& world, const std::string& secondGuid, bool asParts) {
  for (const char* guid : {"1", secondGuid.c_str()}) {
    const unsigned number = world.arrive();
    if (asParts) world.ledger.enterPart(number, Kind::Text, 1, 2);
    world.take();
    world.put("received", guid, Ledger::token(number));
    world.look();
  }
}
void go(World& world, unsigned sendings, const std::string& box, bool isRefused = false) {
  const unsigned number = world.queue(isRefused);
  for (unsigned i = 0; i < sendings; ++i) world.send(number);
  if (box != "sending") world.file(box);
}

struct FaultRow {
  const char* name;
  void (*happens)(World&);
  const char* said;      // when no fault was at work; empty: all is well
  unsigned explanation;  // the fault by which the ledger explains it; none: by no fault
};
const FaultRow faultRows[] = {
    {"Filed", [](World& world) { receive(world, Kind::Text, 1); }, "", 0},
    {"Lost", [](World& world) { receive(world, Kind::Text, 0); }, "=1= was lost", Fault::CutListing},
    {"LeftOnTheModem", [](World& world) { world.arrive(); }, "=1= is still on the modem", 0},
    {"FiledTwice", [](World& world) { receive(world, Kind::Text, 2); }, "=1= came or went more than once",
     Fault::NotDeleted},
    {"Overwritten", [](World& world) { receiveTwo(world, "1", false); }, "=1= was lost", 0},
    {"LeftInParts", [](World& world) { receiveTwo(world, "2", true); }, "=1= was never joined",
     Fault::CutListing},
    {"Obeyed", [](World& world) { post(world, Kind::Command, 1); }, "", 0},
    {"NotObeyed", [](World& world) { post(world, Kind::Command, 0); }, "=1=, a command, was lost",
     Fault::ApiFault},
    {"ObeyedTwice", [](World& world) { post(world, Kind::Command, 2); }, "=1= came or went more than once",
     Fault::NotDeleted},
    {"StrangerObeyed", [](World& world) { post(world, Kind::StrangersCommand, 1); },
     "=1= of a stranger caused a request", 0},
    {"Sent", [](World& world) { go(world, 1, "sent"); }, "", 0},
    {"SaidToBeSent", [](World& world) { go(world, 0, "sent"); }, "=1= was lost", Fault::SendFault},
    {"SentTwice", [](World& world) { go(world, 2, "sent"); }, "=1= came or went more than once",
     Fault::Killed},
    {"SentAndGone", [](World& world) { go(world, 1, ""); }, "=1= was lost", 0},
    {"NeverSent", [](World& world) { go(world, 0, "sending"); }, "=1= is still in sending", 0},
    {"SentThoughRefused", [](World& world) { go(world, 1, "sent", true); },
     "=1= was sent to a number that is refused", 0},
};
class Ledgers : public testing::TestWithParam<FaultRow> {};
TEST_P(Ledgers, AreSettled) {
  const auto& [name, happens, said, explanation] = GetParam();
  for (const unsigned fault : {0U, static_cast<unsigned>(Fault::Other), explanation}) {
    World world(fault);
    happens(world);
    const std::string report = world.settle();
    const bool wellOrExplained = *said == '\0' || (explanation != 0 && fault == explanation);
    EXPECT_EQ(report.empty(), wellOrExplained);
    EXPECT_TRUE(wellOrExplained || report.find(said) != std::string::npos) << report;
  }
}
INSTANTIATE_ROWS(Ledgers, faultRows);

}  // namespace
