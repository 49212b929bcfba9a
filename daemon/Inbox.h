#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>
#include <vector>

#include "commands/SMSCommand.h"
#include "daemon/InTransit.h"
#include "storage/CheckedStorage.h"

/// Files received messages in one pass of the loop: merges parts with stored ones, and obeys commands.
///
/// If a record cannot be filed, it and all later ones wait for the next pass. So they keep their order, and a
/// limit discards the oldest.
class Inbox : private Orvel::NonCopyable {
 public:
  Inbox(CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit);

  /// Files what earlier passes left, but obeys none of it: a reboot command could otherwise reboot the
  /// gateway for ever. A WARNING names each command that its own pass did not obey either.
  void fileLeft(const Spool::Pass& pass);

  /// Obeys and files the messages received in this pass.
  void file(std::vector<Json::Value> records);

 private:
  enum class Turn { First, Later };  ///< the pass that received a record, or a later one

  /// A batch and the name of its note.
  struct Noted {
    std::string name;  ///< empty if the records could not be noted
    Batch batch;
    std::vector<bool> isFiled = std::vector<bool>(batch.records.size());  ///< by place
  };

  void fileLeftBatch(Noted& noted);
  void fileRange(Noted& noted, std::size_t begin, std::size_t end, Turn turn);
  void fileMerged(std::vector<Json::Value> records, Noted& parts, const std::vector<std::size_t>& places,
                  Turn turn);
  bool obey(Noted& noted, std::size_t place, Turn turn);
  bool obeyNow(Noted& noted, std::size_t place);
  void sayThatNotObeyed(const Batch& batch, std::size_t place);
  bool save(const Json::Value& record);
  bool settle(Noted& noted, Turn turn);

  CheckedStorage& storage_;
  SMSCommand& commands_;
  InTransit& inTransit_;
  bool waits_ = false;  ///< a record could not be filed
};
