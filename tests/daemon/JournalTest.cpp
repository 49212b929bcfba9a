#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "daemon/MainLoop.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/MessageStatus.h"
#include "storage/MessageStore.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"
#include "tests/daemon/FakeProvider.h"
#include "tests/storage/FakeStorage.h"

using testing::HasSubstr;

namespace {

std::string flushed;  ///< what was brought to the disk, in order
bool diskFails = false;

}  // namespace

// In the place of the C library's: no test sees a disk.
extern "C" int fsync(int file) {
  struct stat status{};
  fstat(file, &status);
  flushed += S_ISDIR(status.st_mode) ? "folder " : "file ";
  return 0;
}
extern "C" int syncfs(int folder) noexcept {
  flushed += faccessat(folder, "journal", F_OK, 0) == 0 ? "store beside journal " : "store ";
  errno = EIO;
  return diskFails ? -1 : 0;
}

namespace {

constexpr char received[] = "/inbox/received/1", queued[] = "/outbox/sending/1", sent[] = "/outbox/sent/1",
               failed[] = "/outbox/failed/1";

/// A store on the disk, and daemons that come and go.
class Store {
 public:
  explicit Store(std::initializer_list<std::pair<const char*, std::string>> files = {}) : folder(files) {}

  /// A daemon runs a pass, in which the modem gives `incoming`, and ends.
  void pass(const std::vector<Json::Value>& incoming = {}) {
    Journal journal(folder.path, limit, limit);
    const auto folders =
        std::make_shared<FolderCollectionStorage>(folder.path, folder.path + "/staging", &journal);
    const auto storage = makeMessageStore(folders, limit, limit);
    SMSCommand commands(
        json("{'enabled':true,'checkinEnabled':true,'rebootEnabled':true,'whitelist':{"
             "'enabled':false,'numbers':[]},'password':{'enabled':false,'text':''}}"));
    EXPECT_TRUE(commands.loadConfig());
    RetryState retry;
    modem.incoming = incoming;
    modem.journal = &journal;
    runPass(modem, *storage, commands, journal, timings, retry, [] { return 0U; });
  }

  std::string read(const char* file) const {
    std::string text = readFile(folder.path + file);
    text.erase(
        std::remove_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t' || c == ' '; }),
        text.end());
    std::replace(text.begin(), text.end(), '"', '\'');
    return text;
  }
  bool has(const char* file) const { return std::filesystem::exists(folder.path + file); }

  const TemporaryFolder folder;
  FakeProvider modem;
  std::uint32_t limit = 100;
  std::vector<std::uint32_t> timings;
};

}  // namespace

struct LeftRow {
  const char* name;
  const char* journal;
  const char*
      before;  ///< the file of the record in the folder that the journal names, "-" when there is none
  const char* after;
  const char* log;  ///< a part of what the pass logs
};
const char wholeMessage[] = "{'guid':'1','message':'a','source':'2'}";
const char storedPart[] =
    "{'guid':'1','message':'a...','part-count':2,'part-id':7,'part-index':0,'parts':['a',null]}";
const LeftRow leftRows[] = {
    {"NotFiled", "[{'id':1,'to':1,'record':{'guid':'1','message':'a','source':'2'}}]\n", "-", wholeMessage,
     ""},
    {"Filed", "[{'id':1,'to':1,'record':{'guid':'1','message':'a','source':'2'}}]\n",
     "{'guid':'1','isSMSCommand':true,'message':'a','source':'2'}",
     "{'guid':'1','isSMSCommand':true,'message':'a','source':'2'}", ""},
    {"FiledAndTakenAway", "[{'id':1,'to':1,'record':{'guid':'1','message':'a'}}]\n[{'id':1,'filed':true}]\n",
     "-", "", ""},
    {"FiledAndTorn",
     "[{'id':1,'to':1,'record':{'guid':'1','message':'a','source':'2'}}]\n[{'id':1,'filed':true}]\n", "",
     wholeMessage, ""},
    {"Command", "[{'id':1,'to':1,'record':{'guid':'1','message':'#reboot','source':'2'}}]\n", "-",
     "{'guid':'1','message':'#reboot','source':'2'}", "SMS command in message 1 from 2 is not obeyed"},
    {"PartThatCompletes",
     "[{'id':1,'to':1,'record':{'guid':'2','part-id':7,'message':'','parts':[null,'b']}}]\n", storedPart,
     "{'guid':'1','message':'ab'}", ""},
    {"CompletedMessage", "[{'id':1,'from':1,'to':1,'record':{'guid':'1','message':'ab'}}]\n", storedPart,
     "{'guid':'1','message':'ab'}", ""},
    {"LetGo", "[{'id':1,'to':1,'record':{'guid':'1','message':'a'}}]\n[{'id':1}]\n", "-", "", ""},
    {"LastLineCutShort", "[{'id':1,'to':1,'record':{'guid':'1','message':'a'}}]", "-", "", ""},
    {"Torn", "[{'id':1,'to':1,'record':{'guid':'1','message':'a','source':'2'}}]\nrubbish\n", "-",
     wholeMessage, "is torn: it is set aside as ["},
    {"ChangeOfAWrongType", "[{'id':'x'}]\n", "-", "", "is torn: it is set aside as ["},
    {"StatusWithoutAFolder", "[{'id':1,'to':5,'record':{'guid':'1'}}]\n", "-", "",
     "is torn: it is set aside as ["},
    {"MarkOfNoEntry", "[{'id':1,'filed':true}]\n", "-", "", ""},
    {"Sent", "[{'id':1,'from':2,'to':3,'record':{'guid':'1','status':'sent'}}]\n", "-",
     "{'guid':'1','status':'sent'}", ""},
    {"BegunFromTheQueue", "[{'id':1,'from':2,'record':{'guid':'1','message':'a'}}]\n", "-",
     "{'guid':'1','message':'a','status':'failed'}", "Sending message 1 was begun and never answered"},
    {"BegunRetry", "[{'id':1,'from':4,'record':{'guid':'1','retries':3}}]\n", "{'guid':'1','retries':3}",
     "{'guid':'1','retries':2,'status':'failed'}", "Sending message 1 was begun and never answered"},
};
class Left : public testing::TestWithParam<LeftRow> {};
TEST_P(Left, IsFiledByTheNextDaemon) {
  Store store;
  std::string journal = GetParam().journal, before = GetParam().before;
  for (std::string* const text : {&journal, &before}) std::replace(text->begin(), text->end(), '\'', '"');
  const char* const file =
      journal.find("\"from\":2,\"to\":3") != std::string::npos ? sent
      : journal.find("\"from\":1") != std::string::npos || journal.find("\"from\"") == std::string::npos
          ? received
          : failed;
  writeFile(store.folder.path + "/journal", journal);
  if (before != "-") writeFile(store.folder.path + file, before);
  LogCapture log;
  store.pass();
  EXPECT_THAT(log.text(), HasSubstr(GetParam().log));
  EXPECT_EQ(store.read(file), GetParam().after);
  EXPECT_FALSE(store.has("/journal"));
  EXPECT_EQ(store.has("/journal.unreadable"), std::string(GetParam().log).find("torn") != std::string::npos);
}
INSTANTIATE_ROWS(Left, leftRows);

TEST(Journal, IsThereOnlyWhileSomethingIsOnItsWay) {
  Store store({{queued + 1, R"({"guid":"1","recipient":"2"})"}});
  std::string during;
  store.modem.onSend = [&] {
    during = store.read("/journal");
    EXPECT_EQ(std::filesystem::status(store.folder.path + "/journal").permissions(),
              std::filesystem::perms{0600});
  };
  store.pass({json(wholeMessage)});
  EXPECT_THAT(during, HasSubstr("'recipient':'2'"));
  EXPECT_FALSE(store.has("/journal"));
  EXPECT_TRUE(store.has(received) && store.has(sent));
}

TEST(Journal, PutsAMessageBehindThatEndedADaemon) {
  Store store({{"journal", R"([{"id":1,"from":4,"record":{"guid":"1","recipient":"hangs","retries":3}}])"
                           "\n"},
               {failed + 1, R"({"guid":"1","recipient":"hangs","retries":3})"},
               {"outbox/failed/2", R"({"guid":"2","recipient":"b","retries":3})"},
               {"outbox/failed/0", R"({"guid":"0","recipient":"c","retries":3})"}});
  store.timings = {0};
  store.pass();
  ASSERT_EQ(store.modem.attempts.size(), 3u);
  EXPECT_EQ(store.modem.attempts.back(), "hangs");
}

TEST(Journal, FilesUnderAFreeGuidWhereAnotherMessageLies) {
  Store store({{"journal", R"([{"id":1,"to":1,"record":{"guid":"1","message":"a","source":"2"}}])"
                           "\n"},
               {received + 1, R"({"guid":"1","message":"other"})"},
               {"inbox/received/10", R"({"guid":"10"})"}});
  store.pass();
  EXPECT_EQ(store.read(received), "{'guid':'1','message':'other'}");
  EXPECT_EQ(store.read("/inbox/received/11"), "{'guid':'11','message':'a','source':'2'}");
}

TEST(Journal, IsOneDaemonsAtATime) {
  const TemporaryFolder root;
  Journal first(root.path, 1, 1), second(root.path, 1, 1);
  first.received({json(wholeMessage)});
  LogCapture log;
  second.received({json(wholeMessage)});
  second.received({json(wholeMessage)});
  EXPECT_EQ(log.text(), "[ERROR] Journal [" + root.path + "/journal] belongs to another daemon\n");
}

TEST(Journal, IsOnTheDiskBeforeWhatCannotBeUndone) {
  const TemporaryFolder root({{"outbox/sending/2", R"({"guid":"2"})"}});
  Journal journal(root.path, 1, 1);
  const auto flushedMeanwhile = [] { return std::exchange(flushed, ""); };
  FakeStorage none;
  journal.catchUp(none);
  flushedMeanwhile();
  journal.received({json(wholeMessage)});
  EXPECT_EQ(flushedMeanwhile(), "file folder ");
  journal.prepare(json("{'guid':'2'}"), MessageStatus::Sending);
  journal.begun();
  EXPECT_EQ(flushedMeanwhile(), "");
  journal.answered(true);
  EXPECT_EQ(flushedMeanwhile(), "file ");
  EXPECT_TRUE(journal.isAnswered(json("{'guid':'2'}"), MessageStatus::Sending));
  std::filesystem::remove(root.path + "/outbox/sending/2");
  EXPECT_FALSE(journal.isAnswered(json("{'guid':'2'}"), MessageStatus::Sending));
  journal.saved(json(wholeMessage), MessageStatus::Received, true);
  diskFails = true;
  journal.settle();
  diskFails = false;
  EXPECT_TRUE(journal.isTaken("1"));
  EXPECT_EQ(flushedMeanwhile(), "store beside journal ");
  journal.settle();
  EXPECT_FALSE(journal.isTaken("1"));
  EXPECT_EQ(flushedMeanwhile(), "store beside journal file folder ");
}
