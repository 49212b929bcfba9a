#include <filesystem>

#include "proof/Ledger.h"
#include "simulator/gateway/MessageFolders.h"
#include "simulator/modem/Modem.h"
#include "simulator/support/Files.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"

namespace {
constexpr char sender[] = "+49", command[] = "#ping 1", firstPart[] = "one ", secondPart[] = "text";

// Plays a correct or a faulty daemon between two checks of the ledger.
class Player {
 public:
  explicit Player(unsigned fault) : fault_(fault) {}
  ~Player() {
    for (const char* folder : {Simulator::Modem::storeFolder, Simulator::MessageFolders::root})
      std::filesystem::remove_all(folder);
  }

  std::size_t enter(unsigned kind, const std::string& text) {
    const std::size_t message = ledger.enterIncoming(text, kind, {{text, text}});
    modem.receive(sender, text);
    ledger.arrived(message, 0);
    return message;
  }
  void take() {
    modem.markRead();
    EXPECT_TRUE(modem.deleteRead());
  }
  void put(const std::string& box, const std::string& guid, const Json::Value& record) {
    writeFile(Simulator::MessageFolders::pathOf(box) + "/" + guid, Simulator::toLine(record));
  }
  void file(const std::string& guid, const std::string& text) {
    put("received", guid, Simulator::object({{"message", text}}));
  }
  void remove(const std::string& box, const std::string& guid) {
    std::filesystem::remove(Simulator::MessageFolders::pathOf(box) + "/" + guid);
  }
  void receive(unsigned kind, const std::string& text, unsigned filings) {
    enter(kind, text);
    take();
    for (unsigned i = 0; i < filings; ++i) file(std::to_string(i), text);
  }
  void queue(unsigned sendings, const std::string& box, bool refused = false) {
    ledger.enterQueued("out", sender, refused);
    for (unsigned i = 0; i < sendings; ++i) modem.send(sender, "out");
    if (!box.empty()) put(box, "1", Simulator::object({{"message", "out"}}));
  }
  void look() {
    ledger.observe({fault_, lines, posts, ""});
    lines.clear();
    posts.clear();
  }
  void post(unsigned times) { posts.assign(times, R"({"args": ["1"]})"); }
  // The findings that no window explains.
  std::string settle() {
    look();
    std::string text;
    for (const Ledger::Finding& finding : ledger.settle(modem.sent()))
      if (finding.window == nullptr) text += finding.text + "\n";
    return text;
  }

  Simulator::Modem modem{Simulator::Modem::storeFolder};
  Ledger ledger{2};
  std::vector<std::string> lines, posts;

 private:
  unsigned fault_;
};

void receiveParts(Player& player, bool joined) {
  const std::size_t message =
      player.ledger.enterIncoming("one text", Kind::Text, {{firstPart, firstPart}, {secondPart, secondPart}});
  Json::Value parts(Json::arrayValue);
  for (std::size_t part = 0; part < 2; ++part) {
    const char* const text = part == 0 ? firstPart : secondPart;
    player.modem.receive(sender, text);
    player.ledger.arrived(message, part);
    player.take();
    parts.append(text);
    player.put("received", "1", Simulator::object({{"message", "one  ... "}, {"parts", parts}}));
    player.look();
  }
  if (joined) player.file("1", "one text");
}
void receiveThree(Player& player, const char* displaced) {
  for (const char* const guid : {"1", "2", "3"}) {
    player.receive(Kind::Text, std::string("text ") + guid, 0);
    player.file(guid, std::string("text ") + guid);
    if (*guid == '3') player.remove("received", displaced);
    player.look();
  }
}
void obey(Player& player, unsigned kind, unsigned posts) {
  player.receive(kind, command, 1);
  player.post(posts);
}

struct FaultRow {
  const char* name;
  void (*happens)(Player&);
  const char* said;    // when no fault was at work; empty: all is well
  unsigned fault = 0;  // by which a window explains it; none: by no fault
};
const FaultRow faultRows[] = {
    {"Filed", [](Player& player) { player.receive(Kind::Text, "in", 1); }, ""},
    {"Lost", [](Player& player) { player.receive(Kind::Text, "in", 0); }, "lost: in", Fault::CutListing},
    {"LeftOnTheModem", [](Player& player) { player.enter(Kind::Text, "in"); },
     "lost: in, still on the modem"},
    {"FiledTwice", [](Player& player) { player.receive(Kind::Text, "in", 2); }, "twice: in",
     Fault::NotDeleted},
    {"ListedAgain",
     [](Player& player) {
       player.enter(Kind::Text, "in");
       player.look();
       player.ledger.died();
       player.take();
       for (const char* const guid : {"1", "2"}) player.file(guid, "in");
     },
     ""},
    {"Spoilt",
     [](Player& player) {
       player.receive(Kind::Text, "in", 1);
       player.file("1", "im");
     },
     "stray: /var/config/sms/inbox/received/1", Fault::CutListing},
    {"Overwritten",
     [](Player& player) {
       player.receive(Kind::Text, "in", 1);
       player.look();
       player.receive(Kind::Text, "other", 1);
     },
     "lost: in, filed and gone", Fault::CutListing},
    {"Joined", [](Player& player) { receiveParts(player, true); }, ""},
    {"LeftInParts", [](Player& player) { receiveParts(player, false); }, "apart: one text",
     Fault::CutListing},
    {"Displaced", [](Player& player) { receiveThree(player, "1"); }, ""},
    {"DisplacedOutOfTurn", [](Player& player) { receiveThree(player, "2"); }, "lost: text 2, filed and gone"},
    {"Obeyed", [](Player& player) { obey(player, Kind::Command, 1); }, ""},
    {"NotObeyed", [](Player& player) { obey(player, Kind::Command, 0); }, "not obeyed: #ping 1",
     Fault::ApiFault},
    {"NotObeyedAndSaid",
     [](Player& player) {
       player.receive(Kind::Command, command, 0);
       player.lines = {"SMS command in message 0 from +49 is not obeyed: an earlier pass was cut off"};
       player.look();
       player.file("0", command);
     },
     ""},
    {"ObeyedTwice", [](Player& player) { obey(player, Kind::Command, 2); }, "twice: #ping 1",
     Fault::NotDeleted},
    {"StrangerObeyed", [](Player& player) { obey(player, Kind::Text, 1); }, "twice: #ping 1"},
    {"Sent", [](Player& player) { player.queue(1, "sent"); }, ""},
    {"SaidToBeSent", [](Player& player) { player.queue(0, "sent"); }, "unsent: out", Fault::SendFault},
    {"GivenUp", [](Player& player) { player.queue(0, "failed"); }, "unsent: out", Fault::TmpFull},
    {"SentTwice", [](Player& player) { player.queue(2, "sent"); }, "sent again: out", Fault::Unanswered},
    {"SentAndGone", [](Player& player) { player.queue(1, ""); }, "lost: out"},
    {"NeverSent", [](Player& player) { player.queue(1, "sending"); }, "unsent: out, still in sending"},
    {"RemovedLate",
     [](Player& player) {
       player.queue(0, "sending", true);
       player.put("failed", "1", Simulator::object({{"message", "out"}}));
       player.look();
       player.remove("sending", "1");
     },
     ""},
    {"SentThoughRefused", [](Player& player) { player.queue(1, "failed", true); },
     "unsent: out, was refused"},
    {"SentElsewhere",
     [](Player& player) {
       player.queue(1, "sent");
       player.modem.send("+50", "out");
     },
     "stray: sent"},
};
TEST_ROWS(Ledgers, AreSettled, faultRows) {
  const auto& [name, happens, said, explanation] = GetParam();
  for (const unsigned fault : {0U, 1U << 31, explanation}) {
    Player player(fault);
    happens(player);
    const std::string report = player.settle();
    const bool well = *said == '\0' || (explanation != 0 && fault == explanation);
    EXPECT_EQ(report.find(well ? "" : said), 0U) << report;
    EXPECT_EQ(report.empty(), well) << report;
  }
}

TEST(Ledgers, ReportWhatHappenedToAMessage) {
  Player player(Fault::TmpFull);
  player.lines = {"a line of the log"};
  player.receive(Kind::Command, command, 1);
  player.look();
  const std::vector<Ledger::Finding> findings = player.ledger.settle({});
  ASSERT_EQ(findings.size(), 1U);
  const std::string& history = findings[0].history;
  for (const std::string part :
       {"met: No room under /tmp", "look 1: ", "off the modem: #ping", "received/0", "log a line of the log"})
    EXPECT_NE(history.find(part), std::string::npos) << history;
}
}  // namespace
