#include "daemon/InTransit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "storage/FolderCollectionStorage.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"

namespace {
constexpr char journalOfOldVersions[] = "/journal";
}

InTransit::InTransit(const std::string& root, const std::string& staging)
    : spool(root), root_(root), staging_(staging) {
  const std::string journal = root + journalOfOldVersions;
  if (access(journal.c_str(), F_OK) == 0)
    ORVEL_LOG(WARNING, "Journal [%s] of an earlier version is not read and stays where it is",
              journal.c_str());
}

void InTransit::begin(const Spool::Pass& pass) {
  received_ = 0;  // what a pass that broke off has noted is among those that it left
  if (!pass.numbers.empty()) FolderCollectionStorage::makeMissingFolders(root_, staging_);
}

std::optional<SpoolEntry> InTransit::read(unsigned number) {
  const std::optional<Spool::Note> note = spool.read(number);
  if (!note) return std::nullopt;
  std::optional<SpoolEntry> entry = entryOf(*note);
  if (!entry) spool.setAside(number);
  return entry;
}

unsigned InTransit::takeReceived() { return std::exchange(received_, 0); }

std::string InTransit::fileOf(const Json::Value& record, int status) const {
  return root_ + MessageStatus::folder(status) + "/" + MessageRecord::guid(record);
}

bool InTransit::isTaken(const std::string& guid) const {
  Json::Value record(Json::objectValue);
  record[MessageRecord::Key::Guid] = guid;
  struct stat status;
  // A look may fail once; a file that is there must not be replaced.
  const std::string file = fileOf(record, MessageStatus::Received);
  for (int tries = 0; tries < 2; ++tries) {
    if (lstat(file.c_str(), &status) == 0) return true;
    if (errno == ENOENT) return false;
  }
  return false;
}

void InTransit::aboutToDelete(const std::vector<Json::Value>& records) {
  if (const std::optional<Spool::Note> note = noteOf(Batch{Batch::Kind::Received, records}))
    received_ = spool.add(*note);
}

void InTransit::expectSend(const Json::Value& record, int from) {
  send_ = {Send::Stage::Begun, record, from};
  number_ = 0;
}

void InTransit::aboutToSend() { noteSend(Send::Stage::Begun); }

void InTransit::answered(bool sent) { noteSend(sent ? Send::Stage::Sent : Send::Stage::Refused); }

std::optional<std::pair<unsigned, Send>> InTransit::takeSend() {
  if (number_ == 0) return std::nullopt;
  return std::pair{std::exchange(number_, 0), std::move(send_)};
}

void InTransit::noteSend(Send::Stage stage) {
  if (send_.stage != Send::Stage::Begun) return;
  send_.stage = stage;
  if (number_ != 0)
    spool.rename(number_, stageOf(send_), true);
  else if (const std::optional<Spool::Note> note = noteOf(send_))
    number_ = spool.add(*note);
}
