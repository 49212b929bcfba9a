#pragma once

#include <string>

namespace Orvel {
/// Writes the daemon's log lines to syslog or to standard error. Callers log with the macro ORVEL_LOG below.
class Logger {
 public:
  /// The six levels in ascending order, and the label that lines of each level begin with.
  struct PrintLevel {
    static constexpr int TRACE_LEVEL = 0;
    static constexpr int DEBUG_LEVEL = 1;
    static constexpr int INFO_LEVEL = 2;
    static constexpr int WARNING_LEVEL = 3;
    static constexpr int ERROR_LEVEL = 4;
    static constexpr int FATAL_LEVEL = 5;
    static constexpr char TRACE_LABEL[] = "TRACE";
    static constexpr char DEBUG_LABEL[] = "DEBUG";
    static constexpr char INFO_LABEL[] = "INFO";
    static constexpr char WARNING_LABEL[] = "WARNING";
    static constexpr char ERROR_LABEL[] = "ERROR";
    static constexpr char FATAL_LABEL[] = "FATAL";
  };

  /// Where lines go. Until a call of setup() succeeds, they go to standard error.
  enum class PrintMode { StandardError = 1, Syslog = 3 };

  /// Selects `mode`. For syslog, calls openlog() with `ident`, `option` and `facility`. If `ident` is empty
  /// or no process listens on the syslog socket, returns false and keeps the old mode.
  static bool setup(const PrintMode& mode, const std::string& ident, const int& option, const int& facility);

  /// Selects `mode` without an ident. Returns false and keeps the old mode if `mode` is syslog.
  static bool setup(const PrintMode& mode);

  /// Returns true if lines of `level` are written. The build setting VELD_LOG_LEVEL is the lowest such level.
  static bool isPrintable(int level);

  /// Writes one complete line of any length: "[label] " and the formatted text. Writes each byte of a control
  /// character or of invalid UTF-8 as "#" and three octal digits. Therefore no message text can forge a log
  /// line, and systemd's journal does not treat a line as binary data.
  static void printfGeneric(int level, const char* label, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
};
}  // namespace Orvel

/// Logs one line at a level from TRACE to FATAL: ORVEL_LOG(WARNING, "no answer from %s", name). Evaluates the
/// arguments only if the level is printable. The compiler checks the arguments against the format.
#define ORVEL_LOG(LEVEL, ...)                                                              \
  do {                                                                                     \
    if (Orvel::Logger::isPrintable(Orvel::Logger::PrintLevel::LEVEL##_LEVEL))              \
      Orvel::Logger::printfGeneric(Orvel::Logger::PrintLevel::LEVEL##_LEVEL,               \
                                   Orvel::Logger::PrintLevel::LEVEL##_LABEL, __VA_ARGS__); \
  } while (false)
