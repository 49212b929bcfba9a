#pragma once

#include <string>

namespace Standalone {
/// The settings of the tool. Their file has lines of "key = value", empty lines, and "#" comments.
struct Config {
  static constexpr char standardFile[] = "/etc/smsconfig";

  std::string port;  ///< the device of a modem with AT commands; empty to use the modem of ModemManager
  std::string pin;   ///< the PIN of the SIM; empty if it needs none

  /// Reads `file`. A missing file counts as empty. Throws a Problem if a line is invalid.
  static Config read(const std::string& file);
};
}  // namespace Standalone
