#include <gmock/gmock.h>
#include <unistd.h>

#include "daemon/MainLoop.h"
#include "daemon/PartMerger.h"
#include "support/Logger.h"
#include "support/Watchdog.h"
#include "tests/Commands.h"
#include "tests/DatagramSocket.h"
#include "tests/LogCapture.h"
#include "tests/daemon/World.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using namespace MessageStatus;

namespace {
// These changes permit only #reboot, and only from the number 1.
constexpr char rebootByNumber1[] = "{'checkinEnabled':false,'whitelist':{'enabled':true,'numbers':['1']}}";
constexpr char firstPart[] =
    "{'guid':'1','source':'1','part-id':7,'part-count':2,'part-index':0,'message':'#re ... "
    "','parts':['#re',null]}";
constexpr char secondPart[] =
    "{'guid':'2','source':'1','part-id':7,'part-count':2,'part-index':1,'message':' ... boot',"
    "'parts':[null,'boot']}";

class Pass : public testing::Test {
 protected:
  /// Runs a pass that receives `incoming`. Returns what it logs.
  std::string pass(const std::vector<std::string>& incoming = {}) {
    for (const std::string& record : incoming) world_.provider.incoming.push_back(json(record));
    LogCapture log;
    runPass(world_.provider, world_.storage, commands_, world_.inTransit, {10}, retry_,
            [this] { return now_; });
    return log.text();
  }

  std::uint32_t now_ = 1000;
  World world_;
  Commands commands_{rebootByNumber1};
  RetryState retry_;
};
}  // namespace

TEST_F(Pass, ReadsOnlyTheOutboxWhenThereIsNothingToDo) {
  EXPECT_EQ(pass(), "");
  EXPECT_EQ(world_.folders->loads, (std::map<int, int>{{Sending, 1}, {Failed, 1}}));
}

TEST_F(Pass, FilesAMessageLaterWhenSavingFailed) {
  world_.takeStagingAway();
  pass({"{'guid':'1','source':'1','message':'#reboot'}"});
  world_.bringStagingBack();
  EXPECT_THAT(pass(), testing::Not(HasSubstr("[WARNING]")));  // it was executed in the first pass
  EXPECT_EQ(pass(), "");
  EXPECT_THAT(world_.records(Received),
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
  EXPECT_THAT(world_.records(Received), ElementsAre(json("{'guid':'1','source':'2','message':'#reboot'}"),
                                                    json("{'guid':'2','source':'1','message':'#checkin'}")));
}

TEST_F(Pass, OffersNothingWhileCommandsAreDisabled) {
  Commands disabled("{'enabled':false}");
  world_.provider.incoming = {json("{'guid':'1','source':'1','message':'#reboot'}")};
  LogCapture log;
  runPass(world_.provider, world_.storage, disabled, world_.inTransit, {}, retry_);
  EXPECT_EQ(log.text(), "[WARNING] SMS commands not enabled\n");
  EXPECT_THAT(world_.records(Received), ElementsAre(json("{'guid':'1','source':'1','message':'#reboot'}")));
}

TEST(PartOfMultipart, IsARecordWithPartId) {
  EXPECT_TRUE(isPartOfMultipart(json("{'part-id':1}")));
  EXPECT_FALSE(isPartOfMultipart(json("{'parts':[],'part-count':1}")));
}

TEST_F(Pass, OffersOnlyWholeRecordsToTheCommands) {
  EXPECT_EQ(pass({"{'guid':'3','message':'#reboot'}", "{'guid':'4','source':'1'}"}),
            "[WARNING] SMS commands is enabled\n[WARNING] SMS commands is enabled\n");
  EXPECT_THAT(pass({"{'guid':'5','source':'','message':''}"}),
              HasSubstr("[WARNING] SMS commands processing message [] from recipient []\n[ERROR] "));
  EXPECT_EQ(pass({firstPart}), "");
  EXPECT_THAT(world_.records(Received),
              ElementsAre(json(firstPart), json("{'guid':'3','message':'#reboot'}"),
                          json("{'guid':'4','source':'1'}"), json("{'guid':'5','source':'','message':''}")));
}

TEST_F(Pass, JoinsAMessageOverTwoPassesAndObeysIt) {
  pass({firstPart});
  world_.folders->onSave = [] { ORVEL_LOG(INFO, "saved"); };
  EXPECT_THAT(pass({secondPart}), AllOf(HasSubstr("[WARNING] SMS commands executing command\n"),
                                        EndsWith("sendCommand failed\n[INFO] saved\n")));
  EXPECT_THAT(world_.records(Received), ElementsAre(json("{'guid':'1','source':'1','message':'#reboot'}")));
}

TEST_F(Pass, FilesInOrderAndJoinedMessagesLast) {
  world_.put(firstPart, Received);
  pass({secondPart, "{'guid':'6','source':'1','message':'hello'}",
        "{'guid':'5','part-id':8,'message':'','parts':['a',null]}",
        "{'guid':'4','source':'1','message':'again'}"});
  EXPECT_THAT(world_.folders->saved, ElementsAre("6", "5", "4", "1"));
}

TEST_F(Pass, FillsEveryStoredMessageOfTheReference) {
  for (const char* const parts : {"{'guid':'8','source':'1','part-id':7,'parts':['a',null,null]}",
                                  "{'guid':'9','source':'2','part-id':7,'parts':[null,'b',null]}"})
    world_.put(parts, Received);
  EXPECT_EQ(pass({"{'guid':'7','source':'3','part-id':7,'message':'','parts':[null,null,'c']}"}), "");
  EXPECT_THAT(
      world_.records(Received),
      ElementsAre(json("{'guid':'8','source':'1','part-id':7,'message':'a ... c','parts':['a',null,'c']}"),
                  json("{'guid':'9','source':'2','part-id':7,'message':' ... bc','parts':[null,'b','c']}")));
}

TEST_F(Pass, LosesNoPartWhileSavingFails) {
  pass({"{'guid':'9','part-id':7,'part-count':3,'message':'','parts':['a',null,null]}"});
  world_.takeStagingAway();
  pass({"{'guid':'8','part-id':7,'part-count':3,'message':'','parts':[null,'b',null]}"});
  pass({"{'guid':'7','part-id':7,'part-count':3,'message':'','parts':[null,null,'c']}"});
  world_.bringStagingBack();
  pass();
  pass();
  EXPECT_THAT(world_.records(Received), ElementsAre(json("{'guid':'9','message':'abc'}")));
}

TEST_F(Pass, FilesAPartThatFillsNoGap) {
  pass({firstPart});
  Json::Value again = json(firstPart);
  again["guid"] = "3";
  pass({again.toStyledString(), "{'guid':'4','part-id':7,'message':'','parts':[null,null,'x']}"});
  EXPECT_THAT(world_.names(Received), ElementsAre("1", "3", "4"));
  EXPECT_EQ(world_.folders->loads[Received], 5);  // once in each pass, and once for each save under a limit
}

TEST_F(Pass, IgnoresStoredFilesThatCannotTakeThePart) {
  int name = 10;
  for (const char* const stored : {"[1]", "7", "null", "{'guid':'5','part-id':'x','parts':[null,null]}",
                                   "{'guid':'6','part-id':7,'parts':{'a':1}}", "{'guid':'7','part-id':7}",
                                   "{'guid':'8','part-id':7,'parts':[null,null,{}]}", firstPart})
    world_.put(stored, Received, std::to_string(name++));
  EXPECT_THAT(pass({secondPart}), HasSubstr("executing command"));
}

TEST_F(Pass, SendsQueuedMessages) {
  world_.provider.refused = {"bad"};
  for (const char* const queued : {"{'guid':'1','recipient':'good'}", "{'guid':'2','recipient':'bad'}",
                                   "{'guid':'3','recipient':'bad','retries':3}"})
    world_.put(queued, Sending);
  pass();
  EXPECT_THAT(world_.names(Sent), ElementsAre("1"));
  EXPECT_THAT(world_.records(Failed),  // the first failure uses up no retry
              ElementsAre(json("{'guid':'2','recipient':'bad','status':'failed'}"),
                          json("{'guid':'3','recipient':'bad','retries':3,'status':'failed'}")));
  EXPECT_TRUE(retry_.timerStarted);
  EXPECT_EQ(retry_.lastTime, 1000u);

  now_ = 1003;
  world_.provider.onSend = [this] { ++now_; };
  world_.put("{'guid':'4','recipient':'bad'}", Sending);
  pass();
  EXPECT_EQ(retry_.lastTime, 1003u);  // the retry step set it; a running timer is not restarted
}

TEST_F(Pass, MovesOnlyTheSentRecordOfTwoWithTheSameGuid) {
  for (const int to : {Sent, Failed}) {
    if (to == Failed) world_.provider.refused = {"one"};
    world_.put("{'guid':'1','recipient':'one'}", Sending);
    world_.provider.onSend = [this] { world_.put("{'guid':'1','recipient':'later'}", Sending, "2"); };
    EXPECT_EQ(pass(), "");
    EXPECT_EQ(world_.records(to)[0]["recipient"], "one");
    EXPECT_THAT(world_.names(Sending), ElementsAre("2"));
    std::filesystem::remove(world_.root.path + folder(Sending) + std::string("/2"));
  }
}

TEST_F(Pass, FeedsTheWatchdogForEachMessage) {
  DatagramSocket manager("/run/manager");
  setenv("NOTIFY_SOCKET", "/run/manager", 1);
  Orvel::Watchdog::setup();
  world_.put(firstPart, Received);
  world_.put("{'guid':'3','recipient':'failed','retries':1}", Failed);
  world_.put("{'guid':'4','recipient':'queued'}", Sending);
  startFailureTimer(retry_, [this] { return now_ - 10; });
  pass({"{'guid':'5'}", secondPart});
  EXPECT_THAT(world_.provider.attempts, ElementsAre("failed", "queued"));
  int signs = 0;
  while (manager.receive() == "WATCHDOG=1") ++signs;
  EXPECT_EQ(signs, 5);  // two received, one joined, one retried, one sent
  alarm(60);
  while (signs++ < 1000) Orvel::Watchdog::feed();  // the socket is full: feed() must not block
  alarm(0);
  Orvel::Watchdog::setup();
}

TEST_F(Pass, SendsAMessageThatCannotBeMovedOnlyOnce) {
  world_.folders->removes = false;
  startFailureTimer(retry_, [this] { return now_; });
  world_.put("{'guid':'1','recipient':'failed','retries':1}", Failed);
  world_.put("{'guid':'2','recipient':'queued'}", Sending);
  for (int passes = 0; passes < 2; ++passes) {
    now_ += 10;
    pass();
  }
  EXPECT_THAT(world_.provider.attempts, ElementsAre("failed", "queued"));
}

TEST_F(Pass, LogsAnExceptionAndContinues) {
  world_.put("{'guid':'1','recipient':'good'}", Sending);
  world_.provider.onSend = [] { throw std::string("a text"); };
  EXPECT_EQ(pass(), "[FATAL] a text\n");
  world_.provider.onSend = [] { throw std::runtime_error("anything else"); };
  EXPECT_EQ(pass(), "[FATAL] Exeption was detected\n");
  world_.provider.onSend = nullptr;
  world_.provider.onReceive = [] { throw std::string("no modem"); };
  EXPECT_EQ(pass(), "[FATAL] no modem\n");
  EXPECT_THAT(world_.names(Sending), ElementsAre("1"));
  world_.provider.onReceive = nullptr;
  EXPECT_EQ(pass(), "");
  EXPECT_THAT(world_.names(Sent), ElementsAre("1"));
  EXPECT_FALSE(retry_.timerStarted);
}
