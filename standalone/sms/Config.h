#pragma once

#include <string>

namespace Standalone {

/// The settings in the file that SMS_CONFIG names: lines of "key = value". Empty lines and lines that begin
/// with "#" have no effect.
struct Config {
  static constexpr char standardFile[] = "/etc/smsconfig";

  std::string port;  ///< the device of a modem with AT commands; empty: the modem of ModemManager
  std::string pin;   ///< the PIN of the SIM; empty if it needs none

  /// Reads `file`. A missing file counts as empty. Throws a Problem that names the line if a key is unknown
  /// or a line is malformed.
  static Config read(const std::string& file);
};

}  // namespace Standalone
