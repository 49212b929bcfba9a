#include "daemon/InTransit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "daemon/SendInProgress.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {
constexpr char journalOfOldVersions[] = "/journal";
}

InTransit::InTransit(const std::string& root, const std::string& staging)
    : spool(root), root_(root), staging_(staging) {}

void InTransit::begin(const Spool::Pass& pass) {
  if (!std::exchange(tookStock_, true)) takeStock(pass);
  if (!pass.numbers.empty()) FolderCollectionStorage::makeMissingFolders(root_, staging_);
}

std::optional<SpoolEntry> InTransit::read(unsigned number) {
  const std::optional<Spool::Note> note = spool.read(number);
  if (!note) return std::nullopt;
  std::optional<SpoolEntry> entry = parseEntry(*note);
  if (!entry) spool.setAside(number);
  return entry;
}

unsigned InTransit::takeReceived() { return std::exchange(received_, 0); }

std::string InTransit::fileOf(const Json::Value& record, int status) const {
  return root_ + MessageStatus::folder(status) + "/" + MessageRecord::guid(record);
}

bool InTransit::isTaken(const std::string& guid) const {
  if (waiting.count(guid) != 0) return true;
  Json::Value record(Json::objectValue);
  record[MessageRecord::Key::Guid] = guid;
  struct stat status;
  // lstat() may fail once; an existing file must not be replaced.
  const std::string file = fileOf(record, MessageStatus::Received);
  for (int tries = 0; tries < 2; ++tries) {
    if (lstat(file.c_str(), &status) == 0) return true;
    if (errno == ENOENT) return false;
  }
  return false;
}

void InTransit::aboutToDelete(const std::vector<Json::Value>& records) {
  if (const std::optional<std::string> text = textOf(records))
    received_ = spool.add({stageOf(ReceivedBatch{}), *text});
}

void InTransit::aboutToSend() {
  if (sendInProgress != nullptr) sendInProgress->begin();
}

void InTransit::answered(bool sent) {
  if (sendInProgress != nullptr) sendInProgress->answer(sent);
}

// Runs once, in the first pass of a daemon.
void InTransit::takeStock(const Spool::Pass& pass) {
  for (const unsigned number : pass.numbers) {
    Orvel::Watchdog::feed();
    const std::optional<SpoolEntry> entry = read(number);
    if (!entry) continue;
    if (const auto* const batch = std::get_if<ReceivedBatch>(&*entry))
      for (const Json::Value& record : batch->records) waiting.insert(MessageRecord::guid(record));
  }
  const std::string journal = root_ + journalOfOldVersions;
  if (access(journal.c_str(), F_OK) == 0)
    ORVEL_LOG(WARNING, "Journal [%s] of an earlier version is not read and stays where it is",
              journal.c_str());
}
