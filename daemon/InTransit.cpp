#include "daemon/InTransit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "storage/FolderCollectionStorage.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"

InTransit::InTransit(const std::string& root, const std::string& staging)
    : spool(root), root_(root), staging_(staging) {
  const std::string journal = root + "/journal";
  if (access(journal.c_str(), F_OK) == 0)
    ORVEL_LOG(WARNING, "Journal [%s] of an earlier version is not read and stays where it is",
              journal.c_str());
}

void InTransit::begin(const Spool::Pass& pass) const {
  if (!pass.names.empty()) const FolderCollectionStorage created(root_, staging_);
}

std::string InTransit::takeReceived() { return std::exchange(received_, ""); }

std::string InTransit::fileOf(const Json::Value& record, int status) const {
  return root_ + MessageStatus::folder(status) + "/" + MessageRecord::guid(record);
}

bool InTransit::isTaken(const std::string& guid) const {
  struct stat status;
  // A look may fail once; a file that is there must not be replaced.
  const std::string file = root_ + MessageStatus::folder(MessageStatus::Received) + "/" + guid;
  for (int tries = 0; tries < 2; ++tries) {
    if (lstat(file.c_str(), &status) == 0) return true;
    if (errno == ENOENT) return false;
  }
  return false;
}

void InTransit::aboutToDelete(const std::vector<Json::Value>& records) {
  const std::optional<Spool::Note> note = noteOf(Batch{Batch::Kind::Received, records});
  received_ = note ? spool.add(*note) : "";
}

void InTransit::expectSend(const Json::Value& record, int from) {
  send_ = {Send::Stage::Begun, record, from};
  sendNote_.clear();
}

void InTransit::aboutToSend() { noteSend(Send::Stage::Begun); }

void InTransit::answered(bool sent) { noteSend(sent ? Send::Stage::Sent : Send::Stage::Refused); }

std::string InTransit::takeSend() { return std::exchange(sendNote_, ""); }

void InTransit::dropUnanswered() {
  if (send_.stage == Send::Stage::Begun) spool.remove(takeSend());
}

void InTransit::noteSend(Send::Stage stage) {
  if (send_.stage != Send::Stage::Begun) return;
  send_.stage = stage;
  if (!sendNote_.empty())
    spool.rename(sendNote_, stageOf(send_), true);
  else if (const std::optional<Spool::Note> note = noteOf(send_))
    sendNote_ = spool.add(*note);
}
