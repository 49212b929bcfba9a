#pragma once

#include <string>

namespace Standalone {

/// The file that SMS_CONFIG names: lines of "key = value". Empty lines and lines that begin with "#" are
/// ignored.
struct Config {
  static constexpr char standardFile[] = "/etc/smsconfig";

  std::string port;  ///< the device of a modem with AT commands; empty: ModemManager
  std::string pin;   ///< of the SIM; empty: the SIM gets none

  /// Reads `file`. A file that is missing counts as empty. Throws a Problem that names the line when a key is
  /// unknown or a line malformed.
  static Config read(const std::string& file);
};

}  // namespace Standalone
