#include "veldctl/OnItsWay.h"

#include <optional>

#include "storage/MessageStatus.h"
#include "storage/SpoolEntry.h"
#include "veldctl/Message.h"

namespace {

std::time_t timeOf(const Json::Value& record) {
  Message message;
  message.status = MessageStatus::Received;
  message.record = record;
  return message.time();
}

// Adds one entry to what was found.
struct Count {
  OnItsWay& found;

  void operator()(const Batch& batch) const {
    if (found.since == 0) found.since = timeOf(batch.records.front());
    found.received += static_cast<std::int64_t>(batch.records.size());
  }
  void operator()(const Send& send) const {
    ++(send.stage == Send::Stage::Begun ? found.begun : found.answered);
  }
};

}  // namespace

OnItsWay readOnItsWay(const std::string& root) {
  OnItsWay found;
  const Spool::Survey spool = Spool::survey(root);
  found.isReadable = spool.readable;
  found.damaged = spool.damaged;
  for (const Spool::Note& note : spool.notes) {
    if (const std::optional<SpoolEntry> entry = entryOf(note))
      std::visit(Count{found}, *entry);
    else
      ++found.damaged;
  }
  return found;
}
