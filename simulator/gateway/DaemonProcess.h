#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace Simulator {

/// The daemon's process. It detaches from whoever starts it, so the process that holds this object becomes
/// the reaper of what its descendants leave behind.
class DaemonProcess {
 public:
  struct Paths {
    std::string program;       ///< the daemon's executable
    std::string clockLibrary;  ///< what is preloaded into it; empty: nothing
    std::string toolFolder;    ///< comes first in its PATH
  };
  static constexpr char outputFile[] =
      "/run/gateway/daemon-output";  ///< what it writes before it has detached
  static constexpr char reportPrefix[] = "/run/gateway/sanitizer";

  explicit DaemonProcess(Paths paths);

  /// Runs the program until it has detached. False, with one line in `problem`, when it is running already or
  /// could not be started, or when it ended itself before it had detached.
  [[nodiscard]] bool start(std::string& problem);
  /// Whether it is running, or has ended by now.
  bool running();
  pid_t pid() const { return pid_; }
  /// What it has open, and its own children; 0 when it is not running.
  std::size_t descriptors() const;
  std::size_t children() const;
  /// Sends a signal; false when it is not running.
  bool signal(int number);
  /// How the last one ended: "0", "1", "signal 9"; empty when it is running or was never started. A report of
  /// a sanitizer is part of it.
  std::string ending();

 private:
  void ended(int status);

  const Paths paths_;
  pid_t pid_ = 0;
  std::string ending_;
};

}  // namespace Simulator
