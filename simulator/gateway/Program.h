#pragma once

#include <sys/types.h>

#include <string>

namespace Simulator {

/// A program of the user, which runs in the gateway beside the daemon.
class Program {
 public:
  /// Runs `command` in a shell, with `path` as its PATH and without standard input. It can print on the
  /// terminal, but Ctrl-C does not reach it.
  void start(const std::string& command, const std::string& path);
  /// Whether the shell runs; false if none was started.
  bool running();
  /// Returns the shell's exit status, or 128 plus the number of the signal that ended it. 0 while it runs,
  /// and if none was started.
  int status();

 private:
  pid_t pid_ = 0;
  int status_ = 0;
};

}  // namespace Simulator
