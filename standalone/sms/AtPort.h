#pragma once

#include <string>
#include <vector>

#include "standalone/sms/Deadline.h"

namespace Standalone {
/// A serial port with a modem that accepts AT commands (3GPP TS 27.007, V.250).
/// The modem echoes each command. Lines before the echo, and unsolicited lines, are ignored.
class AtPort {
 public:
  /// Opens `device`. Throws a Problem if the modem does not answer before the deadline.
  AtPort(const std::string& device, const Deadline& deadline);
  ~AtPort();
  AtPort(const AtPort&) = delete;
  AtPort& operator=(const AtPort&) = delete;

  struct Answer {
    std::string error;               ///< the final line, such as "+CMS ERROR: 500"; empty for OK
    std::vector<std::string> lines;  ///< the lines between the echo and the final line

    /// Returns the rest of the first line that begins with `prefix`; an empty text if there is none.
    std::string value(const std::string& prefix) const;
  };

  /// Sends `command` and a line end. Throws a Problem if no answer comes before the deadline.
  Answer ask(const std::string& command);

  /// Sends `command`, waits for the prompt, and sends `data` and Ctrl-Z. Throws a Problem like ask(command).
  Answer ask(const std::string& command, const std::string& data);

  /// Does the same as ask(command), and throws a Problem if the answer is an error.
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
  std::string pending_;  ///< received bytes that were not read as lines yet
};
}  // namespace Standalone
