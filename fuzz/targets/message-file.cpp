// The input is a file of a message folder: the first byte chooses the folder, the rest is the content. A pass
// of the loop reads this file. In this pass the modem delivers a new part of a concatenated message. The
// modem sends messages only if the first byte is even.
// Keeps saved records in memory. On a disk, the input's "guid" would be a part of paths and shell commands.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "daemon/MainLoop.h"
#include "fuzz/shared/Property.h"
#include "provider/MultipartJoiner.h"
#include "storage/FolderStorage.h"
#include "storage/MessageStatus.h"
#include "storage/MessageStore.h"

namespace {
// A storage that has the input in one folder; the other folders are empty. Keeps the saved records in lists.
class OneFolder final : public ICollectionStorage {
 public:
  void save(const Json::Value& record, int status) override { saved[status].push_back(record); }
  void remove(const Json::Value& filter, int status) override { removed[status].push_back(filter); }
  Json::Value load(const Json::Value& filter, int status) override {
    return status == filled ? folder.load(filter) : Json::Value(Json::arrayValue);
  }
  void move(const Json::Value& /*filter*/, int /*from*/, int /*to*/) override {}

  FolderStorage& folder;
  int filled = 0;
  std::vector<Json::Value> saved[5], removed[5];

  explicit OneFolder(FolderStorage& inputFolder, int status) : folder(inputFolder), filled(status) {}
};

class Modem final : public SmsProvider {
 public:
  explicit Modem(bool sends) : sends_(sends) {}
  std::vector<Json::Value> receiveMessages() override {
    Json::Value part;
    part["guid"] = "2026010100000000";
    part["source"] = "1";
    part["message"] = "new";
    part["part-id"] = 7;
    part["part-index"] = 1;
    part["part-count"] = 2;
    return joinMultipartMessages({part});
  }
  bool sendMessage(const Json::Value& message) override {
    offered.push_back(message);
    return sends_;
  }
  std::vector<Json::Value> offered;

 private:
  const bool sends_;
};

// The folder into which the target writes every input.
struct InputFolder {
  InputFolder() { property(mkdtemp(path) != nullptr, "the folder for the input can be created"); }
  ~InputFolder() { std::filesystem::remove_all(path); }
  char path[32] = "/tmp/veld-fuzz-XXXXXX";
};

Json::Value withoutStatus(Json::Value record) {
  if (record.isObject()) record.removeMember("status");
  return record;
}

void checkReceived(const OneFolder& store) {
  const auto& saved = store.saved[MessageStatus::Received];
  property(!saved.empty(), "a new message is filed, whatever record is stored");
  bool found = false;
  for (const Json::Value& record : saved)
    found = found || record["message"].asString().find("new") != std::string::npos;
  property(found, "the new part is filed, alone or merged");
}

// Checks the store after a pass that has offered `record`, the only queued or failed record, to the modem.
void checkSent(const OneFolder& store, const Json::Value& record, bool wasSent) {
  const auto& target = store.saved[wasSent ? MessageStatus::Sent : MessageStatus::Failed];
  property(target.size() == 1, "a message that was offered to the modem is filed once");
  Json::Value expected = withoutStatus(record);
  if (!wasSent && store.filled == MessageStatus::Failed) expected["retries"] = record["retries"].asUInt() - 1;
  property(withoutStatus(target[0]) == expected, "filing changes the status and the retries only");
  property(store.removed[store.filled].size() >= 1,
           "a message that was offered to the modem leaves its old folder");
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const InputFolder input;
  static FolderStorage folder(input.path);
  std::ofstream(std::string(input.path) + "/record") << std::string(data + 1, data + size);
  const Json::Value records = folder.load(Json::nullValue);
  property(records.size() <= 1, "a file holds at most one record");
  if (records.size() == 1 && records[0].isObject())
    property(folder.load(records[0]) == records, "a record matches itself");

  const int status = MessageStatus::Received + data[0] / 2 % 4;
  const bool sends = data[0] % 2 == 0;
  const auto store = std::make_shared<OneFolder>(folder, status);
  const auto limited = makeMessageStore(store, 1, 1);
  const StorageFaults none;
  CheckedStorage storage(*limited, none);
  Json::Value off;
  SMSCommand commands(off);
  Modem modem(sends);
  RetryState retry;
  InTransit inTransit("/nowhere", "/nowhere");
  runPass(modem, storage, commands, inTransit, {0}, retry, [] { return 0U; });

  checkReceived(*store);
  property(modem.offered.size() <= records.size(), "only queued messages are offered to the modem");
  if (modem.offered.empty()) return 0;
  const Json::Value& record = records[0];
  property(modem.offered[0] == record, "the modem is offered the queued record");
  const bool losesARetry = status == MessageStatus::Failed && !sends;
  if (record.isObject() && (!losesARetry || record["retries"].isConvertibleTo(Json::uintValue)))
    checkSent(*store, record, sends);
  return 0;
}
