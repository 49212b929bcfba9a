#include <gmock/gmock.h>
#include <unistd.h>

#include "daemon/MainLoop.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"
#include "tests/DatagramSocket.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/TemporaryFolder.h"
#include "tests/daemon/FakeProvider.h"
#include "tests/storage/FakeStorage.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using namespace MessageStatus;

namespace {

constexpr char commandSettings[] =
    "{'enabled':true,'checkinEnabled':false,'rebootEnabled':true,'whitelist':{'enabled':true,'numbers':['1']}"
    ","
    "'password':{'enabled':false,'text':''}}";
constexpr char firstPart[] =
    "{'guid':'1','source':'1','part-id':7,'part-count':2,'part-index':0,'message':'#re ... "
    "','parts':['#re',null]}";
constexpr char secondPart[] =
    "{'guid':'2','source':'1','part-id':7,'part-count':2,'part-index':1,'message':' ... boot',"
    "'parts':[null,'boot']}";

class Pass : public testing::Test {
 protected:
  Pass() : commands_(json(commandSettings)) {
    EXPECT_TRUE(commands_.loadConfig());
    storage_.journal = provider_.journal = &journal_;
  }

  /// Runs a pass in which the modem gives `incoming`, and returns what is logged.
  std::string pass(const std::vector<std::string>& incoming = {}) {
    for (const std::string& record : incoming) provider_.incoming.push_back(json(record));
    LogCapture log;
    runPass(provider_, storage_, commands_, journal_, {10}, retry_, [this] { return now_; });
    return log.text();
  }

  std::uint32_t now_ = 1000;
  FakeProvider provider_;
  FakeStorage storage_;
  const TemporaryFolder root_;
  Journal journal_{root_.path, 100, 100};
  SMSCommand commands_;
  RetryState retry_;
};

}  // namespace

TEST_F(Pass, TouchesOnlyTheOutboxWhereNothingIsToDo) {
  EXPECT_EQ(pass(), "");
  EXPECT_EQ(storage_.loads, (std::map<int, int>{{Sending, 1}, {Failed, 1}}));
}

TEST_F(Pass, FilesLaterWhatTheStoreDidNotTake) {
  storage_.takes = false;
  pass({"{'guid':'1','source':'1','message':'#reboot'}"});
  storage_.takes = true;
  EXPECT_THAT(pass(), testing::Not(HasSubstr("[WARNING]")));  // it was obeyed, and is not again
  EXPECT_EQ(pass(), "");
  EXPECT_THAT(storage_.records[Received],
              ElementsAre(json("{'guid':'1','source':'1','message':'#reboot','isSMSCommand':true}")));
}

TEST_F(Pass, FilesARefusedCommandUnmarked) {
  EXPECT_THAT(
      pass({"{'guid':'1','source':'2','message':'#reboot'}"}),
      AllOf(testing::StartsWith("[WARNING] SMS commands is enabled\n[WARNING] SMS commands processing "
                                "message [#reboot] from recipient [2]\n"),
            EndsWith("[ERROR] SMSCommand::whiteListGood phone number not in white list\n")));
  EXPECT_THAT(pass({"{'guid':'2','source':'1','message':'#checkin'}"}),
              EndsWith("[ERROR] Failed to execute command [#checkin]\n"));
  EXPECT_THAT(storage_.records[Received],
              ElementsAre(json("{'guid':'1','source':'2','message':'#reboot'}"),
                          json("{'guid':'2','source':'1','message':'#checkin'}")));
}

TEST_F(Pass, OffersOnlyWholeRecordsToTheCommands) {
  EXPECT_EQ(pass({"{'guid':'3','message':'#reboot'}", "{'guid':'4','source':'1'}"}),
            "[WARNING] SMS commands is enabled\n[WARNING] SMS commands is enabled\n");
  EXPECT_EQ(pass({firstPart}), "");
  EXPECT_THAT(storage_.records[Received], ElementsAre(json("{'guid':'3','message':'#reboot'}"),
                                                      json("{'guid':'4','source':'1'}"), json(firstPart)));
}

TEST_F(Pass, JoinsAMessageOverTwoPassesAndObeysIt) {
  pass({firstPart});
  storage_.onSave = [this] { ORVEL_LOG(INFO, "%s", journal_.left()[0]["message"].asCString()); };
  EXPECT_THAT(pass({secondPart}),
              AllOf(HasSubstr("[WARNING] SMS commands executing command\n"),
                    EndsWith("sendCommand failed\n[INFO] #reboot\n")));  // obeyed before it is filed
  EXPECT_THAT(storage_.records[Received], ElementsAre(json("{'guid':'1','source':'1','message':'#reboot'}")));
}

TEST_F(Pass, FillsEachStoredMessageOfTheReferenceWhoeverSentIt) {
  for (const char* const parts : {"{'guid':'8','source':'1','part-id':7,'parts':['a',null,null]}",
                                  "{'guid':'9','source':'2','part-id':7,'parts':[null,'b',null]}"})
    storage_.save(json(parts), Received);
  EXPECT_EQ(pass({"{'guid':'7','source':'3','part-id':7,'message':'','parts':[null,null,'c']}"}), "");
  EXPECT_THAT(
      storage_.records[Received],
      ElementsAre(json("{'guid':'8','source':'1','part-id':7,'message':'a ... c','parts':['a',null,'c']}"),
                  json("{'guid':'9','source':'2','part-id':7,'message':' ... bc','parts':[null,'b','c']}")));
}

TEST_F(Pass, LosesNoPartWhileTheStoreTakesNothing) {
  pass({"{'guid':'9','part-id':7,'part-count':3,'message':'','parts':['a',null,null]}"});
  storage_.takes = false;
  pass({"{'guid':'8','part-id':7,'part-count':3,'message':'','parts':[null,'b',null]}"});
  pass({"{'guid':'7','part-id':7,'part-count':3,'message':'','parts':[null,null,'c']}"});
  storage_.takes = true;
  pass();
  pass();
  EXPECT_THAT(storage_.records[Received], ElementsAre(json("{'guid':'9','message':'abc'}")));
}

TEST_F(Pass, FilesAPartThatFillsNothing) {
  pass({firstPart});
  Json::Value again = json(firstPart);
  again["guid"] = "3";
  pass({again.toStyledString(), "{'guid':'4','part-id':8,'message':'','parts':[null,'x']}"});
  EXPECT_THAT(storage_.guids(Received), ElementsAre("1", "3", "4"));
  EXPECT_EQ(storage_.loads[Received], 2);  // once a pass
}

TEST_F(Pass, MergesPastWhateverLiesInTheStore) {
  for (const char* const stored : {"[1]", "7", "null", "{'guid':'5','part-id':'x','parts':[null,null]}",
                                   "{'guid':'6','part-id':7,'parts':{'a':1}}", "{'guid':'7','part-id':7}",
                                   "{'guid':'8','part-id':7,'parts':[null,null,{}]}", firstPart})
    storage_.records[Received].push_back(json(stored));
  EXPECT_THAT(pass({secondPart}), HasSubstr("executing command"));
}

TEST_F(Pass, SendsWhatIsQueued) {
  provider_.refused = {"bad"};
  storage_.records[Sending] = {json("{'guid':'1','recipient':'good'}"),
                               json("{'guid':'2','recipient':'bad'}"),
                               json("{'guid':'3','recipient':'bad','retries':3}")};
  pass();
  EXPECT_THAT(storage_.guids(Sent), ElementsAre("1"));
  EXPECT_THAT(storage_.records[Failed],  // the first failure costs no retry
              ElementsAre(json("{'guid':'2','recipient':'bad'}"),
                          json("{'guid':'3','recipient':'bad','retries':3}")));
  EXPECT_TRUE(retry_.timerStarted);
  EXPECT_EQ(retry_.lastTime, 1000u);

  now_ = 1003;
  provider_.onSend = [this] { ++now_; };
  storage_.records[Sending] = {json("{'guid':'4','recipient':'bad'}")};
  pass();
  EXPECT_EQ(retry_.lastTime, 1003u);  // when the retry step looked; the timer runs already
}

TEST_F(Pass, GivesASignOfLifeForEachMessage) {
  DatagramSocket manager("/run/manager");
  setenv("NOTIFY_SOCKET", "/run/manager", 1);
  Orvel::Watchdog::setup();
  storage_.records[Received] = {json(firstPart)};
  storage_.records[Failed] = {json("{'guid':'3','recipient':'failed','retries':1}")};
  storage_.records[Sending] = {json("{'guid':'4','recipient':'queued'}")};
  startFailureTimer(retry_, [this] { return now_ - 10; });
  pass({"{'guid':'5'}", secondPart});
  EXPECT_THAT(provider_.attempts, ElementsAre("failed", "queued"));
  int signs = 0;
  while (manager.receive() == "WATCHDOG=1") ++signs;
  EXPECT_EQ(signs, 5);  // two that came, one that is whole by them, one sent again, one sent
  alarm(60);
  while (signs++ < 1000) Orvel::Watchdog::feed();  // nobody takes them: none may wait
  alarm(0);
  Orvel::Watchdog::setup();
}

TEST_F(Pass, SendsNothingAgainThatCannotBeMoved) {
  storage_.removes = false;
  startFailureTimer(retry_, [this] { return now_; });
  for (const int from : {Failed, Sending}) {
    storage_.records = {{from, {json("{'guid':'1','recipient':'good','retries':1}")}}};
    writeFile(root_.path + folder(from) + "/1", storage_.records[from][0].toStyledString());
    for (int passes = 0; passes < 2; ++passes) {
      now_ += 10;
      pass();
    }
  }
  EXPECT_THAT(provider_.attempts, ElementsAre("good", "good"));
}

TEST_F(Pass, LogsWhatIsThrownAndGoesOn) {
  storage_.records[Sending] = {json("{'guid':'1','recipient':'good'}")};
  provider_.onSend = [] { throw std::string("a text"); };
  EXPECT_EQ(pass(), "[FATAL] a text\n");
  provider_.onSend = [] { throw std::runtime_error("anything else"); };
  EXPECT_EQ(pass(), "[FATAL] Exeption was detected\n");
  provider_.onSend = nullptr;
  EXPECT_EQ(pass(), "");
  EXPECT_THAT(storage_.guids(Sent), ElementsAre("1"));
}
