#pragma once

#include <string>
#include <vector>

#include "standalone/sms/Deadline.h"

namespace Standalone {

/// A serial port with a modem that accepts AT commands (3GPP TS 27.007, V.250).
///
/// The modem echoes each command. The port ignores lines before the echo, which are the late answer to a
/// killed call, and unsolicited lines.
class AtPort {
 public:
  /// Opens `device` and waits until the modem answers. Throws a Problem when it does not by the deadline.
  AtPort(const std::string& device, const Deadline& deadline);
  ~AtPort();
  AtPort(const AtPort&) = delete;
  AtPort& operator=(const AtPort&) = delete;

  struct Answer {
    std::string error;               ///< the line that reports it, as "+CMS ERROR: 500"; empty for OK
    std::vector<std::string> lines;  ///< between the echo and the final line

    /// The rest of the first line that begins with `prefix`; empty when none does.
    std::string value(const std::string& prefix) const;
  };

  /// Sends a command, given without its line end. Throws a Problem without an answer by the deadline.
  Answer ask(const std::string& command);

  /// The same for a command that prompts for data. Ctrl-Z ends the data.
  Answer ask(const std::string& command, const std::string& data);

  /// The same as ask(), but also throws a Problem for an error answer.
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
  std::string pending_;  ///< input without a complete line yet
};

}  // namespace Standalone
