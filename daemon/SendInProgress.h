#pragma once

#include <json/json.h>

#include "daemon/InTransit.h"

/// A message that is being sent, and its note in the spool. The note is written right before the modem is
/// asked, and renamed when it answers.
///
/// A record is not noted if the file of its guid is missing or holds something else: it could not be filed
/// later.
class SendInProgress : private Orvel::NonCopyable {
 public:
  /// `from` is the status of `record`. Writes nothing yet.
  SendInProgress(InTransit& inTransit, const Json::Value& record, int from);

  /// Removes the note if an exception ended the send before the modem answered.
  ~SendInProgress();

  /// Call this right before the modem is asked. Writes the note, flushed.
  void begin();

  /// Call this after the answer, or if the modem was not asked. Changes the note, flushed. Only the first
  /// call counts.
  void answer(bool sent);

  /// Hands the note over to the caller and returns its number. 0 if there is none: the record could not be
  /// noted, or its file was removed during the send.
  unsigned release();

  [[nodiscard]] const Send& send() const { return send_; }

 private:
  void note(const std::string& stage);

  InTransit& inTransit_;
  Send send_;
  unsigned number_ = 0;
  bool answered_ = false;
};

/// Identifies the file at `path` by its inode and modification time; a replacement with the same content
/// differs. Empty if there is no file.
std::string identityOf(const std::string& path);
