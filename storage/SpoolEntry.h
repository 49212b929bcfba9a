#pragma once

#include <json/json.h>

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "storage/Spool.h"

/// The meaning of a note in the spool. Each line of its text is a record as JSON. Its stage is a word and a
/// number:
///
///     Stage                     After a kill, a power cut or an exception the next pass
///     received-BEGUN            files the records that are not filed; obeys nothing
///     merged-BEGUN              the same
///     sending-FROM              counts the send as failed: it becomes `refused`
///     sent-FROM, refused-FROM   files the record, and sends nothing
///
/// A failed save does not change the stage, and each pass tries again.

/// Records to file under Received, in this order.
struct Batch {
  enum class Kind {
    Received,  ///< received messages, which the modem deletes
    Merged     ///< stored messages with received parts merged in; each replaces its file
  };
  Kind kind = Kind::Received;
  std::vector<Json::Value> records;
  /// The commands in the records before this place, counted from 1, were obeyed or refused; the command at
  /// this place perhaps. 0: none was.
  std::size_t begun = 0;
};

/// A message that is being sent, or was.
struct Send {
  enum class Stage {
    Begun,  ///< the modem has given no answer yet
    Sent,
    Refused
  };
  Stage stage = Stage::Begun;
  Json::Value record;  ///< as stored in its folder
  int from = 0;        ///< the status of that folder: Sending or Failed
};

using SpoolEntry = std::variant<Batch, Send>;

std::string stageOf(const Batch& batch);
std::string stageOf(const Send& send);

/// Whether a batch can hold `record`: its guid is a file name that is safe in a shell command, and its
/// message, source and parts have types that can be filed.
bool isNotable(const Json::Value& record);

/// The note for an entry; nullopt for an entry that entryOf() would refuse. Without a note, filing is tried
/// only once.
std::optional<Spool::Note> noteOf(const Batch& batch);
std::optional<Spool::Note> noteOf(const Send& send);

/// The entry of a note; nullopt for a note that the functions above do not produce.
std::optional<SpoolEntry> entryOf(const Spool::Note& note);

/// Reads a note as an entry; nullopt if that fails. Sets a note with an invalid text aside.
std::optional<SpoolEntry> readEntry(Spool& spool, const std::string& name);
