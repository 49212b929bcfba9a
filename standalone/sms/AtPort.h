#pragma once

#include <string>
#include <vector>

#include "standalone/sms/Deadline.h"

namespace Standalone {

/// A serial port with a modem that takes AT commands (3GPP TS 27.007, V.250).
///
/// The modem echoes each command. What comes before the echo is the late answer to a call that was killed,
/// and is passed over; so are unsolicited lines.
class AtPort {
 public:
  /// Opens `device` and waits until the modem answers. Throws a Problem when it does not by the deadline.
  AtPort(const std::string& device, const Deadline& deadline);
  ~AtPort();
  AtPort(const AtPort&) = delete;
  AtPort& operator=(const AtPort&) = delete;

  struct Answer {
    std::string error;               ///< the line that says so, as "+CMS ERROR: 500"; empty for OK
    std::vector<std::string> lines;  ///< between the echo and the final line

    /// What stands behind `prefix` in the first line that begins with it; empty when none does.
    std::string value(const std::string& prefix) const;
  };

  /// Gives a command, without its line end. Throws a Problem when the modem does not answer by the deadline.
  Answer ask(const std::string& command);

  /// The same for one that asks for data with a prompt. Ctrl-Z ends the data.
  Answer ask(const std::string& command, const std::string& data);

  /// The same as ask(), but an error is a Problem, too.
  Answer demand(const std::string& command);

 private:
  void open();
  void write(const std::string& bytes);
  bool readMore(std::chrono::milliseconds bound);
  std::string nextLine();
  void awaitEcho(const std::string& command);
  void awaitPrompt();
  Answer readAnswer();

  std::string device_;
  const Deadline& deadline_;
  int port_ = -1;
  std::string pending_;  ///< read, and not yet a line
};

}  // namespace Standalone
