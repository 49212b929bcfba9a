#pragma once

#include <json/json.h>

#include <cstddef>
#include <vector>

#include "commands/SMSCommand.h"
#include "daemon/InTransit.h"
#include "daemon/NotedBatch.h"
#include "storage/CheckedStorage.h"

/// Files received messages in one pass of the loop: merges parts with those that are stored, and obeys
/// commands.
///
/// When a record cannot be filed, all that come after it wait with it for the next pass, so that they keep
/// their order: under a limit the newest stay.
class Inbox : private Orvel::NonCopyable {
 public:
  Inbox(CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit);

  /// Files what earlier passes left. None of it is obeyed, since a reboot that came back with each boot would
  /// never end; a WARNING names each command that was not obeyed in its own pass either.
  void fileLeft(const Spool::Pass& pass);

  /// Obeys and files what the modem gave in this pass.
  void file(std::vector<Json::Value> records);

 private:
  enum class Turn { First, Later };  ///< the pass in which a record came, or one after it

  void fileLeftBatch(NotedBatch& batch);
  void fileRange(NotedBatch& batch, std::size_t begin, std::size_t end, Turn turn);
  void fileMerged(std::vector<Json::Value> records, NotedBatch& parts, const std::vector<std::size_t>& places,
                  Turn turn);
  bool obey(NotedBatch& batch, std::size_t place, Turn turn);
  bool obeyNow(NotedBatch& batch, std::size_t place);
  void sayThatNotObeyed(const NotedBatch& batch, std::size_t place);
  bool save(const Json::Value& record);

  CheckedStorage& storage_;
  SMSCommand& commands_;
  InTransit& inTransit_;
  bool waits_ = false;  ///< a record could not be filed
};
