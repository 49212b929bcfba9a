#pragma once

#include <string>

namespace Orvel {

/// Writes the daemon's log lines, to syslog or to standard error. Lines are logged through ORVEL_LOG below.
class Logger {
 public:
  /// The six levels in ascending order, each with the label that its lines carry.
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

  /// The destination of lines; standard error until a set-up has succeeded.
  enum class PrintMode { StandardError = 1, Syslog = 3 };

  /// Selects `mode`. For syslog, opens it under `ident` with openlog's `option` and `facility`; false, with
  /// the mode unchanged, if `ident` is empty or nothing listens on the syslog socket.
  static bool setup(const PrintMode& mode, const std::string& ident, const int& option, const int& facility);

  /// Selects a mode that needs no ident; false, with the mode unchanged, for syslog.
  static bool setup(const PrintMode& mode);

  /// Whether lines of `level` are written: those at VELD_LOG_LEVEL, a build setting, and above.
  static bool isPrintable(int level);

  /// Writes one complete line of any length: "[label] " and the formatted text. Writes each byte of a control
  /// character or of invalid UTF-8 as "#" and three octal digits. So no message text can forge a log line,
  /// and the system's journal does not take a line for binary data.
  static void printfGeneric(int level, const char* label, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
};

}  // namespace Orvel

/// ORVEL_LOG(WARNING, "no answer from %s", name): one line at a level, TRACE to FATAL. The arguments are
/// evaluated only when the level is printable, and the compiler checks them against the format.
#define ORVEL_LOG(LEVEL, ...)                                                              \
  do {                                                                                     \
    if (Orvel::Logger::isPrintable(Orvel::Logger::PrintLevel::LEVEL##_LEVEL))              \
      Orvel::Logger::printfGeneric(Orvel::Logger::PrintLevel::LEVEL##_LEVEL,               \
                                   Orvel::Logger::PrintLevel::LEVEL##_LABEL, __VA_ARGS__); \
  } while (false)
