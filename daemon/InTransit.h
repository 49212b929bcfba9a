#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "provider/ModemEvents.h"
#include "storage/Spool.h"
#include "storage/SpoolEntry.h"

class SendInProgress;

/// Owns the messages on their way between the modem and the message folders. Writes a note to the spool when
/// the modem announces a step that cannot be undone; Inbox and Outbox file what the notes hold.
class InTransit final : public ModemEvents, private Orvel::NonCopyable {
 public:
  /// `root` is the folder above the message folders, `staging` the one where their files are written first.
  InTransit(const std::string& root, const std::string& staging);

  /// If earlier passes left notes, creates missing message folders again.
  void begin(const Spool::Pass& pass);

  /// Reads a note as an entry; nullopt if that fails. Sets a note with an invalid text aside.
  std::optional<SpoolEntry> read(unsigned number);

  /// The number of the note with the messages received last. 0 if there is none; a second call returns 0,
  /// too.
  unsigned takeReceived();

  /// The file of a record under a status.
  [[nodiscard]] std::string fileOf(const Json::Value& record, int status) const;

  Spool spool;
  std::set<std::string> interrupted;         ///< guids of messages that an earlier daemon was sending
  unsigned turn = 0;                         ///< selects the answered send that a pass files first
  SendInProgress* sendInProgress = nullptr;  ///< receives the modem's announcements; may be null

  [[nodiscard]] bool isTaken(const std::string& guid) const override;

 private:
  void aboutToDelete(const std::vector<Json::Value>& records) override;
  void aboutToSend() override;
  void answered(bool sent) override;

  const std::string root_;
  const std::string staging_;
  unsigned received_ = 0;
};
