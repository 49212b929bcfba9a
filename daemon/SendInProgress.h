#pragma once

#include <json/json.h>

#include "daemon/InTransit.h"

/// One message while it is sent: its note in the spool, from right before the modem is asked until the answer
/// is known.
///
/// A record whose file does not bear its guid's name, or holds something else, is not noted: nothing could
/// file it.
class SendInProgress : private Orvel::NonCopyable {
 public:
  /// `record` lies under `from`. Nothing is written yet.
  SendInProgress(InTransit& inTransit, const Json::Value& record, int from);

  /// Drops the note of a send that an exception broke off before the modem answered.
  ~SendInProgress();

  /// The modem is about to be asked. Flushed.
  void begin();

  /// The modem has answered, or was not asked at all. Flushed. Only the first call counts.
  void answer(bool sent);

  /// The number of the note, which is the caller's from then on; 0 when there is none: the record could not
  /// be noted, or its file was taken away while it was sent.
  unsigned release();

  [[nodiscard]] const Send& send() const { return send_; }

 private:
  void note(const std::string& stage);

  InTransit& inTransit_;
  Send send_;
  unsigned number_ = 0;
  bool answered_ = false;
};

/// Which file `path` is: its inode and time. A file that replaces another of the same name and content is a
/// different one. Empty when there is none.
std::string identityOf(const std::string& path);
