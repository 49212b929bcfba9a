#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "provider/ModemEvents.h"
#include "storage/Spool.h"
#include "storage/SpoolEntry.h"

class SendInProgress;

/// Owns what is on its way between the modem and the message folders. It notes that in the spool when the
/// modem announces what cannot be undone; Inbox and Outbox take it from there.
class InTransit final : public ModemEvents, private Orvel::NonCopyable {
 public:
  /// `root` is the folder above the message folders, `staging` the one where their files are written first.
  InTransit(const std::string& root, const std::string& staging);

  /// Prepares for what earlier passes left, if anything: message folders that are missing are made again.
  void begin(const Spool::Pass& pass);

  /// Reads a note as an entry. One that makes no sense is set aside.
  std::optional<SpoolEntry> read(unsigned number);

  /// The note of the messages that the modem gave last; 0 when there is none, or it was taken already.
  unsigned takeReceived();

  /// The file of a record under a status.
  [[nodiscard]] std::string fileOf(const Json::Value& record, int status) const;

  Spool spool;
  std::set<std::string> interrupted;         ///< guids of messages whose sending ended a daemon
  unsigned turn = 0;                         ///< with which of several answered sends a pass begins
  SendInProgress* sendInProgress = nullptr;  ///< is told what the modem announces

  [[nodiscard]] bool isTaken(const std::string& guid) const override;

 private:
  void aboutToDelete(const std::vector<Json::Value>& records) override;
  void aboutToSend() override;
  void answered(bool sent) override;

  const std::string root_;
  const std::string staging_;
  unsigned received_ = 0;
};
