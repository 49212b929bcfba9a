#pragma once

#include <json/json.h>

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "storage/Spool.h"

/// What a note of the spool says is on its way. A note is one of four kinds, each with stages of its own:
///
///     Stage                  Kind           After a kill, a power cut or an exception the next pass
///     received-FILED-OFFERED ReceivedBatch  files what is not filed; obeys nothing
///     merged-FILED-OFFERED   MergedBatch    the same
///     ...-obeying            either batch   the same; its next command may have been obeyed
///     sending                BegunSend      counts the send as failed: it becomes `refused`
///     sent, refused          AnsweredSend   files the record, and sends nothing
///     sent-filed, ...        AnsweredSend   removes what is left of the record under its old status
///
/// A save that failed leaves the stage as it is, and each pass tries again.

/// Records that are to be filed under Received, in this order.
struct Batch {
  std::vector<Json::Value> records;
  std::size_t filed = 0;    ///< so many at the front are filed
  std::size_t offered = 0;  ///< so many at the front were offered to the commands; `filed` at the least
  bool obeying = false;     ///< the next one is being obeyed
};
struct ReceivedBatch : Batch {};  ///< what the modem gave and deletes
struct MergedBatch : Batch {};    ///< stored messages that received parts have filled; each replaces its file

/// A message that is sent.
struct Send {
  Json::Value record;    ///< as it lies in its folder
  int from = 0;          ///< the status of that folder: Sending or Failed
  std::string identity;  ///< of its file, which another of the same name does not have
};
struct BegunSend : Send {};  ///< the modem has given no answer yet
struct AnsweredSend : Send {
  bool sent = false;
  bool filed = false;  ///< under the status that the answer leads to
};

using SpoolEntry = std::variant<ReceivedBatch, MergedBatch, BegunSend, AnsweredSend>;

/// The stage of each kind.
std::string stageOf(const ReceivedBatch& batch);
std::string stageOf(const MergedBatch& batch);
std::string stageOf(const BegunSend& send);
std::string stageOf(const AnsweredSend& send);

/// Whether a batch takes `record`: its guid is a file name that a shell command can hold, and its message,
/// source and parts are of the types that filing needs.
bool isNotable(const Json::Value& record);

/// The text for the records of a batch, and for a send; none for what parseEntry would refuse. What cannot be
/// noted is filed as far as that goes, and not waited for.
std::optional<std::string> textOf(const std::vector<Json::Value>& records);
std::optional<std::string> textOf(const Send& send);

/// The entry of a note; none for any note that the calls above do not make.
std::optional<SpoolEntry> parseEntry(const Spool::Note& note);
