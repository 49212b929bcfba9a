#pragma once

#include <sys/types.h>

#include <string>

namespace Simulator {

/// A program of the user's that runs in the gateway beside the daemon.
class Program {
 public:
  /// Runs `command` in a shell, with `path` as its PATH and nothing to read on standard input. It shares the
  /// terminal, but not its Ctrl-C.
  void start(const std::string& command, const std::string& path);
  /// Whether the shell runs; false if none was started.
  bool running();
  /// The shell's exit status, or 128 and the number of the signal that ended it. 0 while it runs, and if none
  /// was started.
  int status();

 private:
  pid_t pid_ = 0;
  int status_ = 0;
};

}  // namespace Simulator
