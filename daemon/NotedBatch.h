#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "daemon/InTransit.h"

/// Received records that are filed one after the other, with their note in the spool, which says how far that
/// is.
class NotedBatch : private Orvel::NonCopyable {
 public:
  enum class Kind {
    Received,  ///< as the modem gave them
    Merged     ///< stored messages that received parts have filled; each replaces its file
  };

  /// `number` is that of the note; 0 when the records could not be noted.
  NotedBatch(InTransit& inTransit, unsigned number, Kind batchKind, Batch batch);

  /// The command in the record at `place` is about to be obeyed; then, it was.
  void setObeying(std::size_t place);
  void setObeyed(std::size_t place);

  /// The record at `place` is filed.
  void setFiled(std::size_t place);

  [[nodiscard]] bool wasOffered(std::size_t place) const { return place < counts_.offered; }

  /// Whether an earlier pass was cut off while it obeyed the record at `place`.
  [[nodiscard]] bool wasBeingObeyed(std::size_t place) const;

  [[nodiscard]] std::size_t filed() const { return counts_.filed; }  ///< so many at the front are filed

  /// When all are filed: brings them to the disk and removes the note. False when some are left.
  bool settle();

  /// Notes the records that are left, as they are now, in place of all. They have been offered to the
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
