#include "daemon/NotedBatch.h"

#include <algorithm>
#include <utility>

#include "storage/Flush.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"

NotedBatch::NotedBatch(InTransit& inTransit, unsigned number, Kind batchKind, Batch batch)
    : kind(batchKind),
      records(std::move(batch.records)),
      inTransit_(inTransit),
      number_(number),
      filed_(batch.filed),
      offered_(batch.offered),
      isFiled_(records.size(), false) {
  std::fill_n(isFiled_.begin(), filed_, true);
}

void NotedBatch::setOffered(std::size_t place) {
  offered_ = std::max(offered_, place + 1);
  inTransit_.spool.rename(number_, stage(filed_, offered_), false);
}

void NotedBatch::setFiled(std::size_t place) {
  isFiled_[place] = true;
  inTransit_.waiting.erase(MessageRecord::guid(records[place]));
  while (filed_ < records.size() && isFiled_[filed_]) ++filed_;
  offered_ = std::max(offered_, filed_);
  inTransit_.spool.rename(number_, stage(filed_, offered_), false);
}

bool NotedBatch::settle() {
  if (filed_ < records.size()) return false;
  if (flushFiled()) inTransit_.spool.remove(number_);
  return true;
}

void NotedBatch::noteRest() {
  if (!flushFiled()) return;
  std::vector<Json::Value> rest;
  for (std::size_t place = 0; place < records.size(); ++place) {
    if (isFiled_[place]) continue;
    inTransit_.waiting.insert(MessageRecord::guid(records[place]));
    rest.push_back(std::move(records[place]));
  }
  if (const std::optional<std::string> text = textOf(rest))
    number_ = inTransit_.spool.replace(number_, {stage(0, rest.size()), *text});
}

std::string NotedBatch::stage(std::size_t filed, std::size_t offered) const {
  if (kind == Kind::Received) return stageOf(ReceivedBatch{{{}, filed, offered}});
  return stageOf(MergedBatch{{{}, filed, offered}});
}

bool NotedBatch::flushFiled() const {
  std::vector<std::string> files;
  for (std::size_t place = 0; place < records.size(); ++place)
    if (isFiled_[place]) files.push_back(inTransit_.fileOf(records[place], MessageStatus::Received));
  return flushFiles(files);
}
