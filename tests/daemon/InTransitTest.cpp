#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <utility>

#include "daemon/MainLoop.h"
#include "storage/NoteFile.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"
#include "tests/daemon/World.h"

using testing::HasSubstr;
using namespace MessageStatus;

namespace {
std::string flushed;           ///< what was brought to the disk, in order
std::set<std::string> broken;  ///< the folders that cannot be flushed
}  // namespace

// Replaces the C library's function: no test can observe the disk.
extern "C" int fsync(int file) {
  char path[256] = {};
  [[maybe_unused]] const ssize_t length =
      readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof(path) - 1);
  const std::string name = std::string(path).substr(std::string(path).rfind('/') + 1);
  flushed += name + " ";
  errno = EIO;
  return broken.count(name) != 0 ? -1 : 0;
}

namespace {
constexpr char settings[] =
    "{'enabled':true,'checkinEnabled':true,'rebootEnabled':true,'whitelist':{'enabled':false,'numbers':[]},"
    "'password':{'enabled':false,'text':''}}";

/// Runs one daemon after another on the folders of one gateway.
class Gateway {
 public:
  explicit Gateway(std::initializer_list<std::pair<const char*, std::string>> files = {}) {
    for (const auto& [file, content] : files) writeFile(world.root.path + "/" + file, content);
  }

  /// Runs a pass of a new daemon that receives `incoming`. Returns what it logs.
  std::string pass(const std::vector<std::string>& incoming = {}) {
    LogCapture log;
    InTransit inTransit(world.root.path, world.root.path + "/staging");
    SMSCommand commands(json(settings));
    EXPECT_TRUE(commands.loadConfig());
    RetryState retry;
    world.provider.events = &inTransit;
    for (const std::string& record : incoming) world.provider.incoming.push_back(json(record));
    runPass(world.provider, world.storage, commands, inTransit, timings, retry, [] { return 0U; });
    world.provider.events = nullptr;
    return log.text();
  }

  void note(const std::string& name, std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    writeFile(world.root.path + "/spool/" + name, NoteFile::framed(text));
  }

  /// Lets every save fail from now on.
  void blockStaging() {
    world.takeStagingAway();
    writeFile(world.root.path + "/staging", "in the way");
  }

  /// The files of the spool, without the reserve.
  std::vector<std::string> spool() const {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(world.root.path + "/spool"))
      if (file.path().filename() != "reserve") names.push_back(file.path().filename());
    return names;
  }

  World world;
  std::vector<std::uint32_t> timings;
};
}  // namespace

struct LeftRow {
  const char* name;
  const char* note;
  const char* text;
  std::pair<int, const char*> before;  ///< a message file, if any
  std::pair<int, const char*> after;   ///< the one message file
  const char* log = "";                ///< a part of what the pass logs; nothing when it is empty
};
const char whole[] = "{'guid':'1','message':'a','source':'2'}";
const char batchOfOne[] = "{'guid':'1','message':'a','source':'2'}";
const char storedPart[] =
    "{'guid':'1','message':'a...','part-count':2,'part-id':7,'part-index':0,'parts':['a',null]}";
const char otherPart[] = "{'guid':'2','part-id':7,'message':'','parts':[null,'b']}";
const char commandInParts[] = "{'guid':'2','source':'3','part-id':7,'message':'','parts':[null,'reboot']}";
const LeftRow leftRows[] = {
    {"NotFiled", "1.received-0", batchOfOne, {}, {Received, whole}},
    {"FiledAndNotMarked",
     "1.received-0",
     batchOfOne,
     {Received, "{'guid':'1','isSMSCommand':true,'message':'a','source':'2'}"},
     {Received, "{'guid':'1','isSMSCommand':true,'message':'a','source':'2'}"}},
    {"Command",
     "1.received-0",
     "{'guid':'1','message':'#reboot','source':'2'}",
     {},
     {Received, "{'guid':'1','message':'#reboot','source':'2'}"},
     "SMS command in message 1 from 2 is not obeyed"},
    {"CommandThatWasBeingObeyed",
     "1.received-1",
     "{'guid':'1','message':'#reboot','source':'2'}",
     {},
     {Received, "{'guid':'1','message':'#reboot','source':'2'}"},
     "SMS command in message 1 from 2 may not have been obeyed: its pass was cut off"},
    {"CommandThatWasPosted",
     "1.received-2",
     "{'guid':'1','message':'#reboot','source':'2'}",
     {},
     {Received, "{'guid':'1','message':'#reboot','source':'2'}"}},
    {"PartThatCompletes",
     "1.received-0",
     otherPart,
     {Received, storedPart},
     {Received, "{'guid':'1','message':'ab'}"}},
    {"PartThatCompletesACommand",
     "1.received-2",
     commandInParts,
     {Received, "{'guid':'1','message':'','source':'3','part-id':7,'parts':['#',null]}"},
     {Received, "{'guid':'1','message':'#reboot','source':'3'}"},
     "SMS command in message 1 from 3 is not obeyed"},
    {"MergedMessage",
     "1.merged-0",
     "{'guid':'1','message':'ab'}",
     {Received, storedPart},
     {Received, "{'guid':'1','message':'ab'}"}},
    {"MergedAndItsPartStillNoted",
     "1.received-0",
     otherPart,
     {Received, storedPart},
     {Received, "{'guid':'1','message':'ab'}"}},
    {"Sent", "1.sent-2", "{'guid':'1'}", {}, {Sent, "{'guid':'1','status':'sent'}"}},
    {"BegunFromTheQueue",
     "1.sending-2",
     "{'guid':'1','retries':2}",
     {},
     {Failed, "{'guid':'1','retries':2,'status':'failed'}"},
     "Sending message 1 was begun and never answered: it counts as failed"},
    {"BegunRetry",
     "1.sending-4",
     "{'guid':'1','retries':3}",
     {Failed, "{'guid':'1','retries':3}"},
     {Failed, "{'guid':'1','retries':2,'status':'failed'}"},
     "Sending message 1 was begun and never answered: it counts as failed"},
    {"BegunAndSentByALaterAttempt",
     "1.sending-2",
     "{'guid':'1'}",
     {Sent, "{'guid':'1','status':'sent'}"},
     {Sent, "{'guid':'1','status':'sent'}"},
     "Sending message 1 was begun and never answered: it counts as failed"},
    {"RefusedRetryThatIsFiled",
     "1.refused-4",
     "{'guid':'1','retries':3}",
     {Failed, "{'guid':'1','retries':2,'status':'failed'}"},
     {Failed, "{'guid':'1','retries':2,'status':'failed'}"}},
    {"SentAndStillQueued",
     "1.sent-2",
     "{'guid':'1'}",
     {Sending, "{'guid':'1'}"},
     {Sent, "{'guid':'1','status':'sent'}"}},
};
class Left : public testing::TestWithParam<LeftRow> {};
TEST_P(Left, IsFiledByTheNextDaemon) {
  Gateway gateway;
  if (const auto [status, record] = GetParam().before; record != nullptr) gateway.world.put(record, status);
  gateway.note(GetParam().note, GetParam().text);
  const std::string log = gateway.pass();
  if (*GetParam().log == '\0') {
    EXPECT_EQ(log, "");
  } else {
    EXPECT_THAT(log, HasSubstr(GetParam().log));
  }
  for (const int status : MessageStatus::all) {
    const auto [afterStatus, record] = GetParam().after;
    std::vector<Json::Value> expected;
    if (status == afterStatus) expected.push_back(json(record));
    EXPECT_EQ(gateway.world.records(status), expected) << status;
  }
  EXPECT_THAT(gateway.spool(), testing::IsEmpty());
  EXPECT_THAT(gateway.world.provider.attempts, testing::IsEmpty());
}
INSTANTIATE_ROWS(Left, leftRows);

TEST(InTransit, ReplacesTheOlderByTheNewerUnderALimit) {
  Gateway gateway;
  for (int guid = 100; guid < 130; ++guid)
    gateway.world.put("{'guid':'" + std::to_string(guid) + "'}", Received);
  gateway.note("1.received-0", "{'guid':'200'}\n{'guid':'201'}");
  gateway.pass({"{'guid':'202'}"});
  const std::vector<std::string> names = gateway.world.names(Received);
  EXPECT_EQ(names.size(), World::receivedLimit);
  EXPECT_EQ(names.front(), "103");
  EXPECT_EQ(names.back(), "202");
}

TEST(InTransit, RetriesAMessageThatEndedADaemonLast) {
  Gateway gateway({{"outbox/failed/1", R"({"guid":"1","recipient":"hangs","retries":3})"},
                   {"outbox/failed/2", R"({"guid":"2","recipient":"b","retries":3})"},
                   {"outbox/failed/0", R"({"guid":"0","recipient":"c","retries":3})"}});
  gateway.note("1.sending-4", "{'guid':'1','recipient':'hangs','retries':3}");
  gateway.timings = {0};
  gateway.pass();
  ASSERT_EQ(gateway.world.provider.attempts.size(), 3u);
  EXPECT_EQ(gateway.world.provider.attempts.back(), "hangs");
}

TEST(InTransit, FilesUnderAFreeGuidIfTheGuidIsTaken) {
  Gateway gateway;
  gateway.note("1.received-0", batchOfOne);
  gateway.world.put("{'guid':'1','message':'other'}", Received);
  gateway.world.put("{'guid':'10'}", Received);
  gateway.pass();
  EXPECT_THAT(gateway.world.names(Received), testing::ElementsAre("1", "10", "11"));
}

TEST(InTransit, IsFlushedBeforeAStepThatCannotBeUndone) {
  Gateway gateway({{"outbox/sending/9", R"({"guid":"9"})"}});
  gateway.pass();
  std::filesystem::rename(gateway.world.root.path + "/outbox/sent/9",
                          gateway.world.root.path + "/outbox/sending/9");
  flushed.clear();
  gateway.world.folders->onSave = [&] { flushed += "save:" + gateway.spool().at(0) + " "; };
  gateway.world.provider.onSend = [] { flushed += "send "; };
  gateway.pass({"{'guid':'1'}", "{'guid':'2','message':'#reboot','source':'2'}"});
  EXPECT_EQ(flushed,
            "1.received-0 spool save:1.received-0 save:1.received-2 1 2 received "
            "2.sending-2 spool send spool save:2.sent-2 9 sending sent ");
}

TEST(InTransit, KeepsItsNotesWhileTheDiskFails) {
  Gateway gateway;
  gateway.pass();
  gateway.note("1.received-0", batchOfOne);
  gateway.note("2.sending-2", "{'guid':'1'}");
  broken = {"received", "failed"};
  gateway.pass();
  broken.clear();
  EXPECT_THAT(gateway.spool(), testing::UnorderedElementsAre("1.received-0", "2.refused-2"));
  gateway.pass();
  EXPECT_THAT(gateway.spool(), testing::IsEmpty());
  EXPECT_EQ(gateway.world.folders->saved.size(), 2u);
}

TEST(InTransit, KeepsAStoredPartUntilTheNoteOfItsOtherPartIsGone) {
  Gateway gateway;
  gateway.world.put(storedPart, Received);
  broken = {"received"};
  gateway.pass({otherPart});
  broken.clear();
  EXPECT_EQ(gateway.world.records(Received), std::vector<Json::Value>{json(storedPart)});
  gateway.pass();
  EXPECT_EQ(gateway.world.records(Received), std::vector<Json::Value>{json("{'guid':'1','message':'ab'}")});
  EXPECT_THAT(gateway.spool(), testing::IsEmpty());
}

TEST(InTransit, FilesAnotherMessageFirstInEachPass) {
  Gateway gateway;
  gateway.pass();
  gateway.note("1.sent-2", "{'guid':'a'}");
  gateway.note("2.sent-2", "{'guid':'b'}");
  gateway.note("3.received-0", "{'guid':'c'}");
  gateway.blockStaging();
  SMSCommand commands(json(settings));
  RetryState retry;
  for (int passes = 0; passes < 3; ++passes)
    runPass(gateway.world.provider, gateway.world.storage, commands, gateway.world.inTransit, {}, retry);
  EXPECT_THAT(gateway.world.folders->saved, testing::ElementsAre("a", "c", "b", "c", "a", "c"));
  EXPECT_THAT(gateway.spool(), testing::UnorderedElementsAre("1.sent-2", "2.sent-2", "3.received-0"));
}

TEST(InTransit, KeepsTheNoteOfASendUntilItIsFiled) {
  Gateway gateway;
  gateway.pass();
  gateway.world.put("{'guid':'1'}", Sending);
  gateway.blockStaging();
  gateway.world.provider.onSend = [&] { gateway.world.provider.events = nullptr; };  // announces no answer
  gateway.pass();
  EXPECT_THAT(gateway.spool(), testing::ElementsAre("1.sent-2"));
}

TEST(InTransit, KeepsTheNoteOfASentMessageWhenFilingThrows) {
  Gateway gateway({{"outbox/sending/1", R"({"guid":"1"})"}});
  gateway.world.folders->onSave = [] { throw std::string("no memory"); };
  gateway.pass();
  EXPECT_THAT(gateway.spool(), testing::ElementsAre("1.sent-2"));
}

TEST(InTransit, SendsAMessageThatIsQueuedAgainInTheSamePass) {
  Gateway gateway({{"outbox/sending/1", R"({"guid":"1"})"}, {"outbox/sending/2", R"({"guid":"2"})"}});
  gateway.world.provider.onSend = [&] {
    if (gateway.world.names(Sent).size() == 1)
      gateway.world.put("{'guid':'" + gateway.world.names(Sent)[0] + "'}", Sending);
  };
  gateway.pass();
  gateway.world.provider.onSend = nullptr;
  gateway.pass();
  EXPECT_EQ(gateway.world.provider.attempts.size(), 3u);
}

TEST(InTransit, KeepsTheRestOfABatchWithItsCommand) {
  Gateway gateway;
  gateway.note("1.received-2", "{'guid':'1'}\n{'guid':'2'}");
  gateway.world.folders->onSave = [&] {
    if (gateway.world.folders->saved.size() == 2) gateway.blockStaging();
  };
  gateway.pass();
  EXPECT_THAT(gateway.spool(), testing::ElementsAre("2.received-1"));
}

TEST(InTransit, SetsAsideANoteThatIsNotAnEntry) {
  Gateway gateway;
  gateway.note("1.received-0", "{'guid':'1','message':{}}");
  gateway.pass();
  EXPECT_THAT(gateway.spool(), testing::ElementsAre("1.received-0.damaged"));
}

TEST(InTransit, CreatesAMissingFolderForWaitingMessages) {
  Gateway gateway;
  std::filesystem::remove_all(gateway.world.root.path + "/inbox");
  gateway.pass({whole});
  EXPECT_THAT(gateway.spool(), testing::ElementsAre("2.received-2"));
  gateway.pass();
  EXPECT_EQ(gateway.world.records(Received), std::vector<Json::Value>{json(whole)});
}

TEST(InTransit, LeavesTheJournalOfAnOldVersion) {
  Gateway gateway({{"journal", "[]\n"}});
  EXPECT_THAT(gateway.pass(),
              HasSubstr("journal] of an earlier version is not read and stays where it is\n"));
}
