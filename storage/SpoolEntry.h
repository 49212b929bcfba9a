#pragma once

#include <json/json.h>

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "storage/Spool.h"

/// The meaning of a note in the spool. There are four kinds, each with its own stages:
///
///     Stage                  Kind           After a kill, a power cut or an exception the next pass
///     received-FILED-OFFERED ReceivedBatch  files what is not filed; obeys nothing
///     merged-FILED-OFFERED   MergedBatch    the same
///     ...-obeying            either batch   the same; its next command may have been obeyed
///     sending                BegunSend      counts the send as failed: it becomes `refused`
///     sent, refused          AnsweredSend   files the record, and sends nothing
///     sent-filed, ...        AnsweredSend   removes what is left of the record under its old status
///
/// A failed save does not change the stage, and each pass tries again.

/// Records to file under Received, in this order.
struct Batch {
  std::vector<Json::Value> records;
  std::size_t filed = 0;    ///< number of filed records at the front
  std::size_t offered = 0;  ///< number of records at the front offered to the commands; at least `filed`
  bool obeying = false;     ///< the next one is being obeyed
};
struct ReceivedBatch : Batch {};  ///< received messages, which the modem deletes
struct MergedBatch : Batch {};    ///< stored messages with received parts merged in; each replaces its file

/// A message that is being sent.
struct Send {
  Json::Value record;    ///< as stored in its folder
  int from = 0;          ///< the status of that folder: Sending or Failed
  std::string identity;  ///< of its file; another file of the same name has another one
};
struct BegunSend : Send {};  ///< the modem has given no answer yet
struct AnsweredSend : Send {
  bool sent = false;
  bool filed = false;  ///< under Sent or Failed, as answered
};

using SpoolEntry = std::variant<ReceivedBatch, MergedBatch, BegunSend, AnsweredSend>;

/// The stage of a note of each kind.
std::string stageOf(const ReceivedBatch& batch);
std::string stageOf(const MergedBatch& batch);
std::string stageOf(const BegunSend& send);
std::string stageOf(const AnsweredSend& send);

/// Whether a batch can hold `record`: its guid is a file name that a shell command can hold, and its message,
/// source and parts are of the types that filing needs.
bool isNotable(const Json::Value& record);

/// The text for the records of a batch, and for a send; nullopt for what parseEntry would refuse. Without a
/// note, filing is tried only once.
std::optional<std::string> textOf(const std::vector<Json::Value>& records);
std::optional<std::string> textOf(const Send& send);

/// The entry of a note; nullopt for a note that the functions above do not produce.
std::optional<SpoolEntry> parseEntry(const Spool::Note& note);
