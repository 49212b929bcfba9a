#include "veldctl/SpoolCounts.h"

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

// Adds one entry of the spool to the counts.
struct Count {
  SpoolCounts& found;

  void operator()(const Batch& batch) const {
    if (batch.filed >= batch.records.size()) return;
    if (found.since == 0) found.since = timeOf(batch.records[batch.filed]);
    found.received += static_cast<std::int64_t>(batch.records.size() - batch.filed);
  }
  void operator()(const BegunSend&) const { ++found.begun; }
  void operator()(const AnsweredSend& send) const {
    if (!send.filed) ++found.answered;
  }
};

}  // namespace

SpoolCounts readSpool(const std::string& root) {
  SpoolCounts found;
  const Spool::Survey spool = Spool::survey(root);
  found.isReadable = spool.readable;
  found.damaged = spool.damaged;
  for (const Spool::Note& note : spool.notes) {
    if (const std::optional<SpoolEntry> entry = parseEntry(note))
      std::visit(Count{found}, *entry);
    else
      ++found.damaged;
  }
  return found;
}
