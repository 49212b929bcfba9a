#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "provider/SmsUtilsProvider.h"
#include "storage/MessageStatus.h"
#include "tests/Testing.h"

using testing::HasSubstr;

namespace {
constexpr char calls[] = "/tmp/calls";
constexpr char sent[] = "/tmp/sent";
constexpr char twoMessages[] = "printf 'index\\naddr: 1\\nuser-data: a\\nindex\\naddr: 2\\n'";

/// Replaces the tool by a shell script that records its calls.
class SmsUtilsProviderTest : public testing::Test {
 protected:
  /// Writes a tool that runs the shell text `body` in each call. "$*" holds the arguments of the call.
  void tool(const std::string& body) {
    writeFile(folder_.path + "/sms",
              std::string("#!/bin/sh\necho \"$SMS_CONFIG $*\" >> ") + calls + "\n" + body + "\n");
    std::filesystem::permissions(folder_.path + "/sms", std::filesystem::perms{0755});
  }
  void SetUp() override {
    setenv("PATH", (folder_.path + ":" + path_).c_str(), 1);
    writeFile("/var/log/veld.log", "");
    std::remove(calls);
  }
  void TearDown() override { setenv("PATH", path_.c_str(), 1); }

  LogCapture log_;
  SmsUtilsProvider provider_;

 private:
  const std::string path_ = getenv("PATH");
  const TemporaryFolder folder_;
};

constexpr char listCalls[] = "/etc/smsconfig list unread\n/etc/smsconfig list read\n";
constexpr char deleteCall[] = "/etc/smsconfig delete read\n";
}  // namespace

TEST_F(SmsUtilsProviderTest, DeletesOnlyIfThereIsAMessageEvenWithoutASender) {
  tool("echo no messages");
  EXPECT_TRUE(provider_.receiveMessages().empty());
  EXPECT_EQ(readFile(calls), listCalls);
  tool("[ \"$*\" != 'list read' ] || printf 'index\\nuser-data: a\\n'");
  EXPECT_TRUE(provider_.receiveMessages().empty());
  EXPECT_EQ(readFile(calls), std::string(listCalls) + listCalls + deleteCall);
  EXPECT_EQ(log_.text(), "[WARNING] SMS recipient is empty\n");
}

TEST_F(SmsUtilsProviderTest, ReadsTheRestOfALineAfter1023BytesAsANewLine) {
  const std::string text(1023 - std::string("user-data: ").size(), 'x');
  tool("[ \"$*\" = 'list read' ] && printf 'index\\nuser-data: %saddr: 1\\n' " + text);
  const Json::Value record = provider_.receiveMessages().at(0);
  EXPECT_EQ(record["message"], text);
  EXPECT_EQ(record["source"], "1");
}

TEST_F(SmsUtilsProviderTest, UsesTheListingOfAFailingToolAndDiscardsTheUnreadListing) {
  tool(std::string("[ \"$1\" = delete ] || ") + twoMessages + "; exit 3");
  EXPECT_EQ(provider_.receiveMessages().size(), 2u);
  EXPECT_EQ(readFile(calls), std::string(listCalls) + deleteCall);
  EXPECT_THAT(log_.text(), testing::EndsWith("[ERROR] [SMS-UTILS] Failed to delete SMS messages: [768]\n"));
  EXPECT_EQ(log_.echo(), "");
}

TEST_F(SmsUtilsProviderTest, ReceivesAndSendsNothingWithoutATool) {
  EXPECT_TRUE(provider_.receiveMessages().empty());
  EXPECT_FALSE(provider_.sendMessage(json("{'recipient':'1'}")));
}

TEST_F(SmsUtilsProviderTest, ReceivesNothingWithoutAPipe) {
  tool(twoMessages);
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const std::vector<Json::Value> records = provider_.receiveMessages();
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_TRUE(records.empty());
  EXPECT_THAT(log_.text(), HasSubstr("[ERROR] [SMS-UTILS] Pipe error: [24][Too many open files]\n"));
}

// The tool pauses in the middle of a line and sends SIGTERM to this process. Then the tool prints the rest.
// The signal mask that the tool records shows that SIGTERM is not blocked in the tool.
TEST_F(SmsUtilsProviderTest, ReadsTheWholeListingUnderSigterm) {
  struct sigaction action{}, before{};
  static volatile std::sig_atomic_t signals;
  signals = 0;
  action.sa_handler = [](int) { signals = signals + 1; };
  sigaction(SIGTERM, &action, &before);
  tool("[ \"$*\" = 'list read' ] || exit 0; grep SigBlk /proc/self/status >> " + std::string(calls) +
       "; printf 'index\\naddr: 1\\nuser-'; sleep 0.1; kill -TERM " + std::to_string(getpid()) +
       "; sleep 0.1; printf 'data: a\\nindex\\naddr: 2\\n'");
  EXPECT_EQ(provider_.receiveMessages().size(), 2u);
  sigaction(SIGTERM, &before, nullptr);
  EXPECT_EQ(signals, 1);
  EXPECT_EQ(readFile(calls), std::string(listCalls) + "SigBlk:\t0000000000000000\n" + deleteCall);
}

struct SendRow {
  const char* name;
  const char* record;
  const char* tool;  ///< the end of the tool's script
  bool result;
  const char* text;  ///< the text that the tool sends; "unsent" if the tool is not called
  const char* log;   ///< the end of the log
};
constexpr char sendLine[] =
    "[INFO] bash -c 'SMS_CONFIG=/etc/smsconfig sms --verbose send -f /tmp/sms/sms-tmp +49 "
    ">> /var/log/veld.log 2>&1'\n";
const SendRow sendRows[] = {
    {"Text", "{'recipient':'+49','message':'two\\nlines'}", "", true, "two\nlines", sendLine},
    {"NumericRecipient", "{'recipient':49,'message':'a'}", "", true, "a",
     "send -f /tmp/sms/sms-tmp 49 >> /var/log/veld.log 2>&1'\n"},
    {"NoText", "{'recipient':'+49'}", "", true, "", sendLine},
    {"TextEndsAtANul", "{'recipient':'+49','message':'a\\u0000b'}", "", true, "a", sendLine},
    {"RefusedAndFileMissing", "{'recipient':'+49','message':'a'}", "rm /tmp/sms/sms-tmp; exit 3", false, "a",
     "[ERROR] Error to send SMS. Error: 768\n"
     "rm: cannot remove '/tmp/sms/sms-tmp': No such file or directory\n"
     "[ERROR] Error to remove file rm /tmp/sms/sms-tmp: [0][Success]\n"},
    {"Killed", "{'recipient':'+49','message':'a'}", "kill -9 $$", false, "a",
     "[ERROR] Error to send SMS. Error: 35072\n"},
    {"FileMissing", "{'recipient':'+49','message':'a'}", "rm /tmp/sms/sms-tmp", true, "a",
     "[ERROR] Error to remove file rm /tmp/sms/sms-tmp: [0][Success]\n"},
    {"EmptyRecipient", "{'recipient':'','message':'a'}", "", false, "unsent",
     "[INFO] SMS recipient is empty\n"},
    {"NoRecipient", "{}", "", false, "unsent", "[INFO] SMS recipient is empty\n"},
    {"NotARecord", "[1]", "", false, "unsent", "[INFO] SMS recipient is empty\n"},
};
class Send : public SmsUtilsProviderTest, public testing::WithParamInterface<SendRow> {};
TEST_P(Send, PassesTheTextToTheTool) {
  writeFile(sent, "unsent");
  tool(std::string("cat \"$4\" > ") + sent + "; echo said; " + GetParam().tool);
  errno = 0;
  EXPECT_EQ(provider_.sendMessage(json(GetParam().record)), GetParam().result);
  EXPECT_EQ(readFile(sent), GetParam().text);
  EXPECT_THAT(log_.text(), testing::EndsWith(GetParam().log));
  EXPECT_FALSE(std::filesystem::exists("/tmp/sms/sms-tmp"));
}
INSTANTIATE_ROWS(Send, sendRows);

TEST_F(SmsUtilsProviderTest, CallsTheCallbacksBeforeDeletingAndBeforeAndAfterSending) {
  struct Events final : ModemEvents {
    bool isTaken(const std::string& guid) const override { return guid.substr(14) == "00"; }
    void aboutToDelete(const std::vector<Json::Value>& records) override {
      note("about to delete from " + records[0]["guid"].asString().substr(14));
    }
    void aboutToSend() override { note("about to send"); }
    void answered(bool sent) override { note(sent ? "sent" : "refused"); }
    static void note(const std::string& event) { std::ofstream(calls, std::ios::app) << event << "\n"; }
  } events;
  SmsUtilsProvider provider(&events);
  tool("[ \"$*\" != 'list read' ] || exec " + std::string(twoMessages));
  provider.receiveMessages();
  EXPECT_THAT(readFile(calls), testing::EndsWith("about to delete from 01\n" + std::string(deleteCall)));
  provider.sendMessage(json("{'recipient':'+49'}"));
  EXPECT_THAT(
      readFile(calls),
      testing::EndsWith("about to send\n/etc/smsconfig --verbose send -f /tmp/sms/sms-tmp +49\nsent\n"));
  tool("exit 1");
  provider.sendMessage(json("{'recipient':'+49'}"));
  EXPECT_THAT(readFile(calls), testing::EndsWith("refused\n"));
}

TEST_F(SmsUtilsProviderTest, LogsTheCommandBeforeItRunsAndAppendsTheToolsOutput) {
  tool("cat \"$4\"; echo wrong >&2; cat /proc/" + std::to_string(getpid()) + "/fd/2 >>" + calls);
  writeFile("/tmp/sms/sms-tmp", "a leftover");
  provider_.sendMessage(json("{'recipient':'+49','message':'hi '}"));
  EXPECT_THAT(readFile(calls), testing::EndsWith(sendLine));
  provider_.sendMessage(json("{'recipient':'+49','message':'you '}"));
  EXPECT_EQ(readFile("/var/log/veld.log"), "hi wrong\nyou wrong\n");
}

TEST_F(SmsUtilsProviderTest, FailsToSendWhenTheStagingFolderIsFullOrMissing) {
  std::filesystem::create_symlink("/dev/full", "/tmp/sms/sms-tmp");
  EXPECT_FALSE(provider_.sendMessage(json("{'recipient':'1','message':'a'}")));
  std::filesystem::remove_all("/tmp/sms");
  EXPECT_FALSE(provider_.sendMessage(json("{'recipient':'1','message':[]}")));  // does not read the text
  EXPECT_EQ(log_.text(),
            "[ERROR] Cannot write file /tmp/sms/sms-tmp: [28][No space left on device]\n"
            "[ERROR] Cannot open file [/tmp/sms/sms-tmp] to write: [2][No such file or directory]\n");
}

TEST_F(SmsUtilsProviderTest, ThrowsForARecipientOrAMessageOfTheWrongType) {
  EXPECT_THROW(provider_.sendMessage(json("{'recipient':{}}")), Json::LogicError);
  EXPECT_THROW(provider_.sendMessage(json("{'recipient':'1','message':[]}")), Json::LogicError);
}
