#include <algorithm>

#include "storage/FolderCollectionStorage.h"
#include "storage/LimitCollectionStorageDecorator.h"
#include "storage/LimitNullCollectionStorageDecorator.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "storage/MessageStore.h"
#include "storage/StatusCollectionStorageDecorator.h"
#include "tests/Testing.h"

using namespace MessageStatus;

namespace {
/// The message folders below a temporary folder.
class Folders {
 public:
  /// Writes a message file, named by the "guid" of `record` unless there is a `name`.
  void put(const Json::Value& record, int status, const std::string& name = "") {
    const std::string file = name.empty() ? MessageRecord::guid(record) : name;
    writeFile(root.path + folder(status) + "/" + file, record.toStyledString());
  }

  /// The names of the message files: an array for each status, sorted, as compact text.
  std::string names() const {
    std::string all;
    for (const int status : MessageStatus::all) {
      std::vector<std::string> files;
      for (const auto& file : std::filesystem::directory_iterator(root.path + folder(status)))
        files.push_back(file.path().filename());
      std::sort(files.begin(), files.end());
      for (const std::string& file : files) all += file + " ";
      all += status != Failed ? "| " : "";
    }
    return all;
  }

  const TemporaryFolder root;
  const std::shared_ptr<FolderCollectionStorage> storage =
      std::make_shared<FolderCollectionStorage>(root.path, root.path + "/staging");
};
}  // namespace

TEST(FolderCollectionStorage, HasAFolderForEachStatusAndMovesNothing) {
  const Folders folders;
  FolderCollectionStorage& storage = *folders.storage;
  const std::pair<int, const char*> files[] = {{Received, "/inbox/received/1"},
                                               {Sending, "/outbox/sending/1"},
                                               {Sent, "/outbox/sent/1"},
                                               {Failed, "/outbox/failed/1"}};
  for (const auto& [status, file] : files) {
    storage.save(json("{'guid':'1'}"), status);
    storage.move(Json::nullValue, status, status % Failed + 1);
    EXPECT_TRUE(std::filesystem::exists(folders.root.path + file)) << file;
    EXPECT_EQ(storage.load(Json::nullValue, status).size(), 1u);
    EXPECT_EQ(storage.load(Json::nullValue, status % Failed + 1).size(), 0u);
    storage.remove(json("{'guid':'1'}"), status);
    EXPECT_FALSE(std::filesystem::exists(folders.root.path + file)) << file;
  }
}

TEST(FolderCollectionStorage, IgnoresAnUnknownStatus) {
  const Folders folders;
  for (const int status : {-1, 0, 5}) {
    folders.storage->save(json("{'guid':'1'}"), status);
    folders.storage->remove(Json::nullValue, status);
    EXPECT_EQ(folders.storage->load(Json::nullValue, status), Json::Value());
  }
}

TEST(MessageStatus, HasATextForEveryNumber) {
  std::string texts;
  for (int status = -1; status <= 5; ++status) texts += MessageStatus::text(status) + std::string(" ");
  EXPECT_EQ(texts, "unknown unknown received sending sent failed unknown ");
}

const Row<int, const char*> moveRows[] = {
    {"Received", Received, "[{'guid':'1'}]"},
    {"Sending", Sending, "[{'guid':'1','status':'sending'}]"},
    {"Sent", Sent, "[{'guid':'1','status':'sent'}]"},
    {"Failed", Failed, "[{'guid':'1','status':'failed'}]"},
    {"NoFolder", 5, "null"},
};
TEST_ROWS(Move, WritesTheStatus, moveRows) {
  const Folders folders;
  const int from = GetParam().given == Sent ? Failed : Sent;
  folders.storage->save(json("{'guid':'1','status':'old'}"), from);
  StatusCollectionStorageDecorator(folders.storage).move(json("{'guid':'1'}"), from, GetParam().given);
  EXPECT_EQ(folders.storage->load(Json::nullValue, GetParam().given), json(GetParam().expected));
  EXPECT_EQ(folders.storage->load(Json::nullValue, from), json("[]"));
}

struct MoveFilterRow {
  const char* name;
  const char* filter;
  const char* left;  ///< the files of each status afterwards
  unsigned failedRemovals;
};
const MoveFilterRow moveFilterRows[] = {
    {"AllRecords", "null", "| | | 1 2 ", 2},  // the first removal empties the folder
    {"Guid", "{'guid':'1'}", "| 2 other | | 1 ", 1},
    {"Record", "{'guid':'1','message':'a'}", "| 2 other | | 1 ", 0},
    {"NoRecord", "{'guid':'1','message':'c'}", "| 1 2 other | | ", 0},
};
TEST_ROWS(MoveFilter, SelectsRecordsAndRemovesOncePerRecord, moveFilterRows) {
  Folders folders;
  folders.put(json("{'guid':'1','message':'a'}"), Sending);
  folders.put(json("{'guid':'1','message':'b'}"), Sending, "other");
  folders.put(json("{'guid':'2','message':'a'}"), Sending);
  LogCapture log;
  StatusCollectionStorageDecorator(folders.storage).move(json(GetParam().filter), Sending, Failed);
  EXPECT_EQ(folders.names(), GetParam().left);
  const std::string text = log.text();
  unsigned failures = 0;
  for (auto at = text.find("Cannot remove"); at != std::string::npos; at = text.find("Cannot remove", at + 1))
    ++failures;
  EXPECT_EQ(failures, GetParam().failedRemovals) << text;
}

TEST(Move, AcceptsValuesThatAreNotObjects) {
  Folders folders;
  folders.put(json("[1]"), Sending, "1");
  StatusCollectionStorageDecorator(folders.storage).move(json("null"), Sending, Sent);
  EXPECT_EQ(folders.names(), "| | | ");  // without a guid it has no file name
}

struct LimitRow {
  const char* name;
  const char* stored;  ///< the guids by status; null stands for a record without "guid"
  int status;          ///< of the record "5" that is saved, with receivedLimit 3 and sentLimit 4
  const char* left;    ///< the files by status afterwards
};
const LimitRow limitRows[] = {
    {"ReceivedBelow", "[[],['7','6']]", Received, "5 6 7 | | | "},
    {"ReceivedFull", "[[],['7','6','8']]", Received, "5 7 8 | | | "},
    {"ReceivedAbove", "[[],['7','6','8','9']]", Received, "5 7 8 9 | | | "},
    {"ReceivedIsComparedBytewise", "[[],['9','10','8']]", Received, "5 8 9 | | | "},
    {"ReceivedReplacesItself", "[[],['4','5','6']]", Received, "5 6 | | | "},
    {"ReceivedWithoutGuid", "[[],['7',null,'8','9']]", Received, "5 7 8 9 x1 | | | "},
    {"ReceivedGuidWithoutText", "[[],['7',{},'8']]", Received, "5 7 8 x1 | | | "},
    {"OutboxIsNotCounted", "[[],['7','8'],['1'],['2'],['3']]", Received, "5 7 8 | 1 | 2 | 3 "},
    {"OutboxBelow", "[[],[],['7'],['8'],['9']]", Sent, "| 7 | 5 8 | 9 "},
    {"OutboxOldestSending", "[[],[],['6','9'],['7'],['8']]", Sent, "| 9 | 5 7 | 8 "},
    {"OutboxOldestSent", "[[],[],['7','9'],['6'],['8']]", Failed, "| 7 9 | | 5 8 "},
    {"OutboxOldestFailed", "[[],[],['7','9'],['8'],['6']]", Sending, "| 5 7 9 | 8 | "},
    {"OutboxOldestInSendingAndSent", "[[],[],['6'],['6'],['8','9']]", Failed, "| | 6 | 5 8 9 "},
    {"OutboxOldestInSentAndFailed", "[[],[],['7','9'],['6'],['6']]", Sending, "| 5 7 9 | | 6 "},
    {"OutboxWithoutGuid", "[[],[],[null],['7'],['8','9']]", Sent, "| x0 | 5 | 8 9 "},
    {"OutboxAllWithoutGuid", "[[],[],[null,null],[null],[null]]", Sent, "| x0 x1 | 5 x0 | x0 "},
    {"InboxIsNotCounted", "[[],['1','2','3','4'],['7'],['8'],[]]", Sent, "1 2 3 4 | 7 | 5 8 | "},
    {"OtherStatus", "[[],['1','2','3'],['1'],['2'],['3','4']]", 5, "1 2 3 | 1 | 2 | 3 4 "},
};
TEST_ROWS(Limit, DiscardsTheSmallestGuid, limitRows) {
  Folders folders;
  const Json::Value stored = json(GetParam().stored);
  for (Json::ArrayIndex status = 0; status < stored.size(); ++status) {
    for (Json::ArrayIndex i = 0; i < stored[status].size(); ++i) {
      const Json::Value& guid = stored[status][i];
      Json::Value record = json("[1]");
      if (!guid.isNull()) (record = json("{}"))["guid"] = guid;
      folders.put(record, static_cast<int>(status), guid.isString() ? "" : "x" + std::to_string(i));
    }
  }
  const LogCapture quiet;
  LimitCollectionStorageDecorator(folders.storage, 3, 4).save(json("{'guid':'5'}"), GetParam().status);
  EXPECT_EQ(folders.names(), GetParam().left);
}

struct StoreRow {
  const char* name;
  std::uint32_t receivedLimit, sentLimit;
  const char* left;  ///< each status gets two of "1" to "8"; "9" moves from Sending to Sent
};
const StoreRow storeRows[] = {
    {"TwoLimits", 1, 4, "2 | | 6 9 | 7 8 "},
    {"NoInbox", 0, 100, "| 3 4 | 5 6 9 | 7 8 "},
    {"NoOutbox", 100, 0, "1 2 | 3 4 | | "},
};
TEST_ROWS(Store, KeepsToEachLimit, storeRows) {
  const Folders folders;
  const auto store = makeMessageStore(folders.storage, GetParam().receivedLimit, GetParam().sentLimit);
  for (int i = 1; i <= 8; ++i) store->save(json("{'guid':'" + std::to_string(i) + "'}"), (i + 1) / 2);
  store->save(json("{'guid':'9'}"), Sending);
  store->move(json("{'guid':'9'}"), Sending, Sent);
  EXPECT_EQ(folders.names(), GetParam().left);
}
