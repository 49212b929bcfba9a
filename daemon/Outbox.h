#pragma once

#include <string>
#include <vector>

#include "daemon/InTransit.h"
#include "provider/SmsProvider.h"
#include "storage/CheckedStorage.h"

/// Sends messages in one pass of the loop, and files them.
class Outbox : private Orvel::NonCopyable {
 public:
  Outbox(SmsProvider& provider, CheckedStorage& storage, InTransit& inTransit);

  /// Files messages that earlier passes sent but did not file. Sends nothing. A send that got no answer
  /// counts as failed, with a WARNING.
  void fileLeft(const Spool::Pass& pass);

  /// Sends a record of Sending or Failed, and files it under Sent or Failed. A failed retry uses up one of
  /// its retries. True if it was sent.
  bool send(const Json::Value& record, int from);

  /// Whether `record` under `from` was sent before, but its file could not be moved.
  [[nodiscard]] bool isAnswered(const Json::Value& record, int from) const;

  /// Whether an earlier daemon ended while it sent `record`; such a record is retried after the others.
  [[nodiscard]] bool wasInterrupted(const Json::Value& record) const;

 private:
  /// An answered send and the name of its note.
  struct Noted {
    std::string name;
    Send send;
  };

  void takeIn(std::string name, Send send);
  bool fileAgain(const Send& send);
  void settle(const Noted& noted, bool filed);
  bool file(const Send& send);
  [[nodiscard]] bool liesUnderFrom(const Send& send) const;

  SmsProvider& provider_;
  CheckedStorage& storage_;
  InTransit& inTransit_;
  std::vector<Noted> left_;  ///< could not be filed
};
