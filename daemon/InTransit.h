#pragma once

#include <set>
#include <string>
#include <vector>

#include "provider/ModemEvents.h"
#include "storage/Spool.h"
#include "storage/SpoolEntry.h"

/// Owns the messages on their way between the modem and the message folders. Writes a note to the spool when
/// the modem announces a step that cannot be undone; Inbox and Outbox file what the notes hold.
class InTransit final : public ModemEvents, private Orvel::NonCopyable {
 public:
  /// `root` is the folder above the message folders, `staging` the one where their files are written first.
  InTransit(const std::string& root, const std::string& staging);

  /// If earlier passes left notes, creates missing message folders again.
  void begin(const Spool::Pass& pass) const;

  /// The name of the note with the messages received last. Empty if there is none, and in a second call.
  std::string takeReceived();

  /// Expects the modem to be asked to send a record of Sending or Failed.
  void expectSend(const Json::Value& record, int from);

  /// Changes the note of the expected send, flushed; writes one if the modem was not asked. Only the first
  /// answer counts.
  void answered(bool sent) override;

  /// The name of the note of the expected send; empty if it could not be noted, and in a second call.
  std::string takeSend();

  /// Removes the note of a send that an exception ended before the answer: the message stays in its folder.
  void dropUnanswered();

  /// The path of a record's file under a status.
  [[nodiscard]] std::string fileOf(const Json::Value& record, int status) const;

  [[nodiscard]] bool isTaken(const std::string& guid) const override;

  Spool spool;
  std::set<std::string> interrupted;  ///< guids of messages that an earlier daemon was sending
  unsigned turn = 0;                  ///< selects the answered send that a pass files first

 private:
  void aboutToDelete(const std::vector<Json::Value>& records) override;
  void aboutToSend() override;
  void noteSend(Send::Stage stage);

  const std::string root_;
  const std::string staging_;
  std::string received_;  ///< the name of a note; empty: none
  Send send_;             ///< the expected send
  std::string sendNote_;  ///< the name of its note; empty: none
};
