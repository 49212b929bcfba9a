#pragma once

#include <vector>

#include "daemon/InTransit.h"
#include "provider/SmsProvider.h"
#include "storage/CheckedStorage.h"

/// Sends messages in one pass of the loop, and files what came of it.
class Outbox : private Orvel::NonCopyable {
 public:
  Outbox(SmsProvider& provider, CheckedStorage& storage, InTransit& inTransit);

  /// Files what earlier passes have sent and could not file, or did not live to file. Nothing is sent. A send
  /// that was begun and never answered counts as failed, with a WARNING.
  void fileLeft(const Spool::Pass& pass);

  /// Sends a record of Sending or Failed and files it: under Sent; or under Failed, where a failed retry
  /// costs one of its retries. True when it was sent.
  bool send(const Json::Value& record, int from);

  /// Whether the file of `record` under `from` is one that was sent before and could not be moved.
  [[nodiscard]] bool isAnswered(const Json::Value& record, int from) const;

  /// Whether an earlier daemon ended while it sent `record`, so that it goes behind the others.
  [[nodiscard]] bool wasInterrupted(const Json::Value& record) const;

  /// Lets go of what is filed, once that is on the disk.
  void settle();

 private:
  struct Answered {
    unsigned number;
    AnsweredSend send;
  };

  void takeIn(unsigned number, SpoolEntry entry);
  void fileAgain(Answered& answered);
  void setFiled(Answered& answered);
  bool file(const Json::Value& record, int from, bool sent);
  [[nodiscard]] bool liesUnderFrom(const Send& send) const;

  SmsProvider& provider_;
  CheckedStorage& storage_;
  InTransit& inTransit_;
  std::vector<Answered> answered_;
};
