#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Standalone {

/// An error, described in one line for the user. Ends the call with status 1.
class Problem : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A received message, complete or with the parts that have arrived.
struct Message {
  std::string id;  ///< unique among the messages that the modem holds; without blanks
  bool read;       ///< whether the modem itself has marked it as read; some keep no such mark
  std::string centre;
  std::string sender;
  std::string text;  ///< UTF-8
};

/// The output of `sms status`. A value that the modem does not report is absent.
struct Status {
  std::string modem;
  std::string sim;
  std::string registration;
  std::string networkOperator;
  std::optional<unsigned> signal;  ///< per cent
  std::optional<unsigned> stored;  ///< messages of any kind that the modem holds
  std::optional<unsigned> room;    ///< further messages that it can hold
  std::string problem;             ///< empty when well
};

/// The tool's interface to a modem. Each call may throw a Problem; none exceeds the deadline given to the
/// constructor.
class Modem {
 public:
  virtual ~Modem() = default;

  /// Prepares the modem for messages: enables it, and gives the SIM its PIN.
  virtual void prepare() = 0;

  /// Identifies the modem until it restarts: message ids are valid only for the same binding.
  virtual std::string binding() = 0;

  /// The received messages that can be shown. With `unreadToo` those that the modem holds as unread are among
  /// them and may be marked as read by that; without, a modem that keeps such marks leaves them out.
  virtual std::vector<Message> list(bool unreadToo) = 0;

  /// Deletes a message that list() gave. One that is gone already counts as deleted.
  virtual void remove(const std::string& id) = 0;

  /// Sends `text`, valid UTF-8, and returns when the network has taken all parts.
  virtual void send(const std::string& number, const std::string& text) = 0;

  /// Reads the status and changes nothing.
  virtual Status status() = 0;

  /// A problem that does not prevent listing, such as no network; empty without one.
  virtual std::string complaint() = 0;

  /// Called after each listing of unread messages; the argument says whether messages arrived. Makes the
  /// modem show messages that it has missed.
  virtual void lookAgain(bool /*somethingCame*/) {}
};

}  // namespace Standalone
