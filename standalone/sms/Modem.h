#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Standalone {
/// An error, with a text of one line for the user. The tool then exits with status 1.
class Problem : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A received message. If parts have been missing for too long, the text says which parts have arrived.
struct Message {
  std::string id;      ///< unique among the messages that the modem holds; without blanks
  bool read;           ///< true if the modem has marked the message as read; some modems keep no such marks
  std::string centre;  ///< the number of the service centre
  std::string sender;
  std::string text;  ///< UTF-8
};

/// The output of `sms status`. A value that the modem does not report is empty.
struct Status {
  std::string modem;
  std::string sim;
  std::string registration;
  std::string networkOperator;
  std::optional<unsigned> signal;  ///< per cent
  std::optional<unsigned> stored;  ///< messages of any kind that the modem holds
  std::optional<unsigned> room;    ///< how many more messages the modem can hold
  std::string problem;             ///< empty if there is none
};

/// The tool's interface to a modem. Each function may throw a Problem, and returns before the deadline.
class Modem {
 public:
  virtual ~Modem() = default;

  /// Prepares the modem for messages: enables the modem, and enters the PIN of the SIM.
  virtual void prepare() = 0;

  /// Returns a text that changes when the earlier ids of messages become invalid.
  virtual std::string binding() = 0;

  /// Returns the received messages that are complete, or have been incomplete for too long. A modem with read
  /// marks returns unread messages only if `unreadToo` is true, and may mark them as read.
  virtual std::vector<Message> list(bool unreadToo) = 0;

  /// Deletes a message that list() has returned. A message that no longer exists counts as deleted.
  virtual void remove(const std::string& id) = 0;

  /// Sends `text`, which is valid UTF-8. Returns when the network has accepted all parts.
  virtual void send(const std::string& number, const std::string& text) = 0;

  /// Reads the status and changes nothing.
  virtual Status status() = 0;

  /// Returns a problem that does not prevent listing, such as a missing network; empty if there is none.
  virtual std::string warning() = 0;

  /// Makes the modem fetch messages that it has missed, if it is time to do so. The caller calls this
  /// function after each listing of unread messages. `arrived` is true if the listing contained messages.
  virtual void fetchMissed(bool /*arrived*/) {}
};
}  // namespace Standalone
