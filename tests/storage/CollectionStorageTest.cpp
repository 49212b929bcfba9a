#include <gmock/gmock.h>

#include "storage/FolderCollectionStorage.h"
#include "storage/LimitCollectionStorageDecorator.h"
#include "storage/LimitNullCollectionStorageDecorator.h"
#include "storage/MessageStatus.h"
#include "storage/StatusCollectionStorageDecorator.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"
#include "tests/storage/FakeStorage.h"

using testing::ElementsAre;
using namespace MessageStatus;

TEST(FolderCollectionStorage, HasAFolderForEachStatusAndMovesNothing) {
  const TemporaryFolder root;
  FolderCollectionStorage storage(root.path, root.path + "/staging");
  const std::pair<int, const char*> folders[] = {{Received, "/inbox/received/1"},
                                                 {Sending, "/outbox/sending/1"},
                                                 {Sent, "/outbox/sent/1"},
                                                 {Failed, "/outbox/failed/1"}};
  for (const auto& [status, file] : folders) {
    storage.save(json("{'guid':'1'}"), status);
    storage.move(Json::nullValue, status, status % Failed + 1);
    EXPECT_TRUE(std::filesystem::exists(root.path + file)) << file;
    EXPECT_EQ(storage.load(Json::nullValue, status).size(), 1u);
    EXPECT_EQ(storage.load(Json::nullValue, status % Failed + 1).size(), 0u);
    storage.remove(json("{'guid':'1'}"), status);
    EXPECT_FALSE(std::filesystem::exists(root.path + file)) << file;
  }
}

TEST(FolderCollectionStorage, TakesAnUnknownStatus) {
  const TemporaryFolder root;
  FolderCollectionStorage storage(root.path, root.path + "/staging");
  for (const int status : {-1, 0, 5}) {
    storage.save(json("{'guid':'1'}"), status);
    storage.remove(Json::nullValue, status);
    EXPECT_EQ(storage.load(Json::nullValue, status), Json::Value());
  }
}

struct MoveRow {
  const char* name;
  int to;
  const char* moved;
};
const MoveRow moveRows[] = {
    {"Received", Received, "{'guid':'1'}"},
    {"Sending", Sending, "{'guid':'1','status':'sending'}"},
    {"Sent", Sent, "{'guid':'1','status':'sent'}"},
    {"Failed", Failed, "{'guid':'1','status':'failed'}"},
    {"Unknown", 5, "{'guid':'1','status':'unknown'}"},
};
class Move : public testing::TestWithParam<MoveRow> {};
TEST_P(Move, WritesTheStatusOfWhatIsARecord) {
  const auto inner = std::make_shared<FakeStorage>();
  inner->records[9] = {json("[1]"), json("{'guid':'1','status':'old'}")};
  StatusCollectionStorageDecorator(inner).move(Json::nullValue, 9, GetParam().to);
  EXPECT_THAT(inner->records[GetParam().to], ElementsAre(json("[1]"), json(GetParam().moved)));
  EXPECT_THAT(inner->records[9], ElementsAre());
}
INSTANTIATE_ROWS(Move, moveRows);

TEST(Move, RemovesByTheCallersFilterOncePerRecord) {
  const TemporaryFolder root;
  const auto folders = std::make_shared<FolderCollectionStorage>(root.path, root.path + "/staging");
  for (const char* const record : {"{'guid':'1'}", "{'guid':'2'}", "{'guid':'3'}"})
    folders->save(json(record), Sending);
  LogCapture log;
  StatusCollectionStorageDecorator(folders).move(Json::nullValue, Sending, Failed);
  EXPECT_EQ(folders->load(Json::nullValue, Sending).size(), 0u);
  EXPECT_EQ(folders->load(Json::nullValue, Failed).size(), 3u);
  const std::string text = log.text();
  std::size_t failures = 0;
  for (auto at = text.find("Cannot remove"); at != std::string::npos; at = text.find("Cannot remove", at + 1))
    ++failures;
  EXPECT_EQ(failures, 2u) << text;
}

TEST(LimitNull, RefusesWhereNothingIsToBeKept) {
  const auto inner = std::make_shared<FakeStorage>();
  for (const int status : {Received, Sending, Sent, Failed}) {
    LimitNullCollectionStorageDecorator(inner, 0, 1).save(json("{'guid':'no inbox'}"), status);
    LimitNullCollectionStorageDecorator(inner, 1, 0).save(json("{'guid':'no outbox'}"), status);
  }
  EXPECT_THAT(inner->guids(Received), ElementsAre("no outbox"));
  EXPECT_THAT(inner->guids(Sending), ElementsAre("no inbox", "no outbox"));
  EXPECT_THAT(inner->guids(Sent), ElementsAre("no inbox"));
  EXPECT_THAT(inner->guids(Failed), ElementsAre("no inbox"));
}

struct LimitRow {
  const char* name;
  const char* stored;  ///< the records by status
  int status;          ///< of the record "5" that is saved, with a limit of 3
  const char* left;    ///< the guids by status afterwards
};
const LimitRow limitRows[] = {
    {"ReceivedBelow", "[[],['7','6']]", Received, "[[],['7','6','5']]"},
    {"ReceivedFull", "[[],['7','6','8']]", Received, "[[],['7','8','5']]"},
    {"ReceivedAbove", "[[],['7','6','8','9']]", Received, "[[],['7','8','9','5']]"},
    {"ReceivedBytewise", "[[],['9','10','8']]", Received, "[[],['9','8','5']]"},
    {"ReceivedWithoutGuid", "[[],['7',null,'8']]", Received, "[[],['7',null,'8','5']]"},
    {"ReceivedGuidWithoutText", "[[],['7',{},'8']]", Received, "[[],['7',{},'8','5']]"},
    {"OutboxBelow", "[[],[],['7'],['8'],[]]", Sent, "[[],[],['7'],['8','5'],[]]"},
    {"OutboxOldestSending", "[[],[],['6'],['7'],['8']]", Sent, "[[],[],[],['7','5'],['8']]"},
    {"OutboxOldestSent", "[[],[],['7'],['6'],['8']]", Failed, "[[],[],['7'],[],['8','5']]"},
    {"OutboxOldestFailed", "[[],[],['7'],['8'],['6']]", Sending, "[[],[],['7','5'],['8'],[]]"},
    {"OutboxSameGuidTwice", "[[],[],['7'],['6'],['6']]", Sent, "[[],[],['7'],['5'],['6']]"},
    {"OutboxWithoutGuid", "[[],[],[null],['7'],['8']]", Sent, "[[],[],[null],['5'],['8']]"},
    {"OutboxAllWithoutGuid", "[[],[],[null],[null],[null]]", Sent, "[[],[],[null],[null,'5'],[null]]"},
    {"InboxIsNotCounted", "[[],['1','2','3'],['7'],['8'],[]]", Sent, "[[],['1','2','3'],['7'],['8','5'],[]]"},
    {"OtherStatus", "[[],['1','2','3'],['1'],['2'],['3'],[]]", 5,
     "[[],['1','2','3'],['1'],['2'],['3'],['5']]"},
};
class Limit : public testing::TestWithParam<LimitRow> {
 protected:
  /// Status by status; null stands for a record without "guid", an array here, which must not throw.
  static Json::Value guids(FakeStorage& storage, int statuses) {
    Json::Value all(Json::arrayValue);
    for (int status = 0; status < statuses; ++status) {
      Json::Value& list = all.append(Json::arrayValue);
      for (const Json::Value& record : storage.records[status])
        list.append(record.isObject() ? record["guid"] : Json::Value());
    }
    return all;
  }
};
TEST_P(Limit, DiscardsTheSmallestGuid) {
  const auto inner = std::make_shared<FakeStorage>();
  const Json::Value stored = json(GetParam().stored);
  for (int status = 0; status < static_cast<int>(stored.size()); ++status) {
    for (const Json::Value& guid : stored[status]) {
      Json::Value record = json("[1]");
      if (!guid.isNull()) (record = json("{}"))["guid"] = guid;
      inner->records[status].push_back(record);
    }
  }
  LimitCollectionStorageDecorator(inner, 3, 3).save(json("{'guid':'5'}"), GetParam().status);
  EXPECT_EQ(guids(*inner, static_cast<int>(stored.size())), json(GetParam().left));
}
INSTANTIATE_ROWS(Limit, limitRows);

TEST(Limit, OfNoneDiscardsNothing) {
  const auto inner = std::make_shared<FakeStorage>();
  inner->records = {{Received, {json("{'guid':'1'}")}}, {Sending, {json("{'guid':'1'}")}}};
  LimitCollectionStorageDecorator storage(inner, 0, 0);
  storage.save(json("{'guid':'2'}"), Received);
  storage.save(json("{'guid':'2'}"), Sent);
  EXPECT_THAT(inner->guids(Received), ElementsAre("1", "2"));
  EXPECT_THAT(inner->guids(Sending), ElementsAre("1"));
  EXPECT_TRUE(inner->loads.empty());
}
