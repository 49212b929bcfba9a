#pragma once

#include <string>

namespace Standalone {

/// The settings in the file that SMS_CONFIG names: lines of "key = value", empty lines, and "#" comments.
struct Config {
  static constexpr char standardFile[] = "/etc/smsconfig";

  std::string port;  ///< the device of a modem with AT commands; empty: the modem of ModemManager
  std::string pin;   ///< the PIN of the SIM; empty if it needs none

  /// Reads `file`. A missing file counts as empty. Throws a Problem that names an invalid line.
  static Config read(const std::string& file);
};

}  // namespace Standalone
