#pragma once

#include <sys/types.h>

#include <string>

namespace Simulator {

/// A program of the user, which runs in the gateway beside the daemon.
class Program {
 public:
  /// Runs `command` in a shell, with `path` as its PATH. The terminal's input and Ctrl-C do not reach it.
  void start(const std::string& command, const std::string& path);

  bool running();
  /// Returns the shell's exit status, or 128 plus the signal that ended it. 0 while it runs, or without one.
  int status();

 private:
  pid_t pid_ = 0;
  int status_ = 0;
};

}  // namespace Simulator
