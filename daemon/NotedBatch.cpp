#include "daemon/NotedBatch.h"

#include <algorithm>
#include <utility>

#include "storage/Flush.h"
#include "storage/MessageStatus.h"

NotedBatch::NotedBatch(InTransit& inTransit, unsigned number, Kind batchKind, Batch batch)
    : kind(batchKind),
      records(std::move(batch.records)),
      inTransit_(inTransit),
      number_(number),
      counts_{{}, batch.filed, batch.offered, batch.obeying},
      isFiled_(records.size(), false) {
  std::fill_n(isFiled_.begin(), counts_.filed, true);
}

void NotedBatch::setObeying(std::size_t place) {
  counts_.offered = std::max(counts_.offered, place);
  counts_.obeying = true;
  rename();
}

void NotedBatch::setObeyed(std::size_t place) {
  counts_.offered = std::max(counts_.offered, place + 1);
  counts_.obeying = false;
  rename();
}

void NotedBatch::setFiled(std::size_t place) {
  isFiled_[place] = true;
  while (counts_.filed < records.size() && isFiled_[counts_.filed]) ++counts_.filed;
  if (counts_.filed > counts_.offered) counts_.obeying = false;
  counts_.offered = std::max(counts_.offered, counts_.filed);
  rename();
}

bool NotedBatch::wasBeingObeyed(std::size_t place) const {
  return counts_.obeying && place == counts_.offered;
}

bool NotedBatch::settle() {
  if (counts_.filed < records.size()) return false;
  if (flushFiled()) inTransit_.spool.remove(number_);
  return true;
}

void NotedBatch::noteRest() {
  if (!flushFiled()) return;
  std::vector<Json::Value> rest;
  for (std::size_t place = 0; place < records.size(); ++place)
    if (!isFiled_[place]) rest.push_back(std::move(records[place]));
  if (const std::optional<std::string> text = textOf(rest))
    number_ = inTransit_.spool.replace(number_, {stage({{}, 0, rest.size()}), *text});
}

std::string NotedBatch::stage(const Batch& counts) const {
  return kind == Kind::Received ? stageOf(ReceivedBatch{counts}) : stageOf(MergedBatch{counts});
}

void NotedBatch::rename() { inTransit_.spool.rename(number_, stage(counts_), false); }

bool NotedBatch::flushFiled() const {
  std::vector<std::string> files;
  for (std::size_t place = 0; place < records.size(); ++place)
    if (isFiled_[place]) files.push_back(inTransit_.fileOf(records[place], MessageStatus::Received));
  return flushFiles(files);
}
