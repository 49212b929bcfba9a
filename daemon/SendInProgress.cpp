#include "daemon/SendInProgress.h"

#include <sys/stat.h>

#include <sstream>
#include <utility>

#include "storage/MessageRecord.h"

SendInProgress::SendInProgress(InTransit& inTransit, const Json::Value& record, int from)
    : inTransit_(inTransit), send_{record, from, ""} {
  const std::string file = inTransit_.fileOf(record, from);
  if (MessageRecord::isInFile(record, file)) send_.identity = identityOf(file);
  inTransit_.sendInProgress = this;
}

SendInProgress::~SendInProgress() {
  inTransit_.sendInProgress = nullptr;
  if (!answered_) inTransit_.spool.remove(number_);
}

void SendInProgress::begin() { note(stageOf(BegunSend{})); }

void SendInProgress::answer(bool sent) {
  if (std::exchange(answered_, true)) return;
  if (identityOf(inTransit_.fileOf(send_.record, send_.from)) == send_.identity)
    note(stageOf(AnsweredSend{{}, sent, false}));
  else
    inTransit_.spool.remove(std::exchange(number_, 0));
}

unsigned SendInProgress::release() { return std::exchange(number_, 0); }

void SendInProgress::note(const std::string& stage) {
  if (send_.identity.empty()) return;
  if (number_ != 0) {
    inTransit_.spool.rename(number_, stage, true);
  } else if (const std::optional<std::string> text = textOf(send_)) {
    number_ = inTransit_.spool.add({stage, *text});
  }
}

std::string identityOf(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return "";
  std::ostringstream text;
  text << status.st_ino << ' ' << status.st_mtim.tv_sec << ' ' << status.st_mtim.tv_nsec;
  return text.str();
}
