#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "daemon/InTransit.h"

/// A batch of received records that are filed one after the other, and its note in the spool. The stage of
/// the note holds the progress.
class NotedBatch : private Orvel::NonCopyable {
 public:
  enum class Kind {
    Received,  ///< as received
    Merged     ///< stored messages with received parts merged in; each replaces its file
  };

  /// `number` is the number of the note; 0 if the records could not be noted.
  NotedBatch(InTransit& inTransit, unsigned number, Kind batchKind, Batch batch);

  /// Call these before and after obeying the command in the record at `place`.
  void setObeying(std::size_t place);
  void setObeyed(std::size_t place);

  /// Call this after filing the record at `place`.
  void setFiled(std::size_t place);

  [[nodiscard]] bool wasOffered(std::size_t place) const { return place < counts_.offered; }

  /// Whether an earlier pass was cut off while it obeyed the record at `place`.
  [[nodiscard]] bool wasBeingObeyed(std::size_t place) const;

  [[nodiscard]] std::size_t filed() const { return counts_.filed; }  ///< number of filed records at the front

  /// If all records are filed, flushes them to the disk and removes the note. False if some are left.
  bool settle();

  /// Replaces the note by one with only the records left, as they are now. They count as offered to the
  /// commands.
  void noteRest();

  const Kind kind;
  std::vector<Json::Value> records;

 private:
  [[nodiscard]] std::string stage(const Batch& counts) const;
  void rename();
  [[nodiscard]] bool flushFiled() const;

  InTransit& inTransit_;
  unsigned number_;
  Batch counts_;  ///< without records
  std::vector<bool> isFiled_;
};
