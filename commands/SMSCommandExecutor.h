#pragma once

#include <string>
#include <vector>

#include "support/NonCopyable.h"

/// Forwards one kind of command to the local API with a POST request to one URL. The JSON body names the
/// sender of the SMS as the recipient of the answer.
///
/// Writes values into the body without JSON escaping. Each call blocks until the API answers; there is no
/// time-out. A call that fails logs the failure and returns false.
class SMSCommandExecutor : private Orvel::NonCopyable {
 public:
  explicit SMSCommandExecutor(std::string url);
  virtual ~SMSCommandExecutor() = default;

  /// Sends {"recipients": [recipient], "message": message}.
  virtual bool execute(const std::string& recipient, const std::string& message);

  /// Sends {"recipients": [recipient], "args": [args...]}.
  virtual bool execute(const std::string& recipient, const std::vector<std::string>& args);

  /// Posts `body` to `url`. Returns true if the "code" of the answer is 200; ignores the HTTP status. Reads a
  /// "code" that does not fit an int as 0. Prints the answer to standard output.
  bool sendCommand(const std::string& url, const std::string& body);

 private:
  bool postFields(const std::string& body);

  const std::string url;
};
