#pragma once

#include <string>
#include <vector>

#include "support/NonCopyable.h"

/// Forwards one kind of command to the local API: a POST to one URL, with a JSON body that names the sender
/// of the SMS as the recipient of the answer.
///
/// Values are inserted into the body without JSON escaping. Calls block until the API answers; there is no
/// time-out. Every failure is logged and returns false.
class SMSCommandExecutor : private Orvel::NonCopyable {
 public:
  explicit SMSCommandExecutor(std::string url);
  virtual ~SMSCommandExecutor() = default;

  /// Sends {"recipients": [recipient], "message": message}.
  virtual bool execute(const std::string& recipient, const std::string& message);

  /// Sends {"recipients": [recipient], "args": [args...]}.
  virtual bool execute(const std::string& recipient, const std::vector<std::string>& args);

  /// Posts `body`. True if the "code" of the answer is 200; the HTTP status is ignored. A "code" that cannot
  /// be read as an int counts as 0. Prints the answer to standard output.
  bool sendCommand(const std::string& url, const std::string& body);

 private:
  bool postFields(const std::string& body);

  const std::string url;
};
