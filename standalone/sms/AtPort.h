#pragma once

#include <string>
#include <vector>

#include "standalone/sms/Deadline.h"

namespace Standalone {

/// A serial port with a modem that accepts AT commands (3GPP TS 27.007, V.250).
///
/// The modem echoes each command. The port ignores unsolicited lines, and those before the echo.
class AtPort {
 public:
  /// Opens `device` and waits for the modem's answer. Throws a Problem if none comes before the deadline.
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

  /// Sends `command`, without its line end. Throws a Problem if no answer comes before the deadline.
  Answer ask(const std::string& command);

  /// Sends a command that prompts for data, then `data` and Ctrl-Z. Throws as above.
  Answer ask(const std::string& command, const std::string& data);

  /// Does what ask() does, and also throws a Problem for an error answer.
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
  std::string pending_;  ///< received bytes that no call has consumed
};

}  // namespace Standalone
