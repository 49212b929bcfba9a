#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Standalone {

/// What keeps the tool from its work, in one line for the person at the keyboard. Ends the call with
/// status 1.
class Problem : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A received message, whole, or what is left of one that is not.
struct Message {
  std::string id;  ///< tells it from any other message that the modem holds; without blanks
  bool read;       ///< whether the modem itself has marked it as read; some keep no such mark
  std::string centre;
  std::string sender;
  std::string text;  ///< UTF-8
};

/// What `sms status` shows. What the modem does not say is absent.
struct Status {
  std::string modem;
  std::string sim;
  std::string registration;
  std::string networkOperator;
  std::optional<unsigned> signal;  ///< per cent
  std::optional<unsigned> stored;  ///< messages of any kind that the modem holds
  std::optional<unsigned> room;    ///< messages that it can hold besides
  std::string problem;             ///< empty when well
};

/// A modem, as the tool uses it. Each call may throw a Problem; none takes longer than the deadline that the
/// object was made with.
class Modem {
 public:
  virtual ~Modem() = default;

  /// Makes the modem fit for messages: enables it, and gives the SIM its PIN.
  virtual void prepare() = 0;

  /// What stands for the modem in this run of it: ids of another binding mean nothing.
  virtual std::string binding() = 0;

  /// The received messages that can be shown. With `unreadToo` those that the modem holds as unread are among
  /// them and may be marked as read by that; without, a modem that keeps such marks leaves them out.
  virtual std::vector<Message> list(bool unreadToo) = 0;

  /// Deletes a message that list() gave. One that is gone already counts as deleted.
  virtual void remove(const std::string& id) = 0;

  /// Sends `text`, valid UTF-8, and returns when the network has taken all parts.
  virtual void send(const std::string& number, const std::string& text) = 0;

  /// Looks, and changes nothing.
  virtual Status status() = 0;

  /// What is wrong although messages can be listed, as an absent network is; empty when nothing is.
  virtual std::string complaint() = 0;

  /// Called after each listing of unread messages, with what is known of earlier calls: does what the modem
  /// needs so that no message stays unseen.
  virtual void lookAgain(bool /*somethingCame*/) {}
};

}  // namespace Standalone
