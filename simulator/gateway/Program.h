#pragma once

#include <sys/types.h>

#include <string>

namespace Simulator {
/// The program of the option --with. It runs in the gateway beside the daemon.
class Program {
 public:
  /// Runs `command` in a shell, with `path` as its PATH. The shell gets no terminal input and no Ctrl-C.
  void start(const std::string& command, const std::string& path);

  bool running();
  /// Returns the shell's exit status, or 128 plus the signal that ended the shell; 0 if no shell has ended.
  int status();

 private:
  pid_t pid_ = 0;
  int status_ = 0;
};
}  // namespace Simulator
