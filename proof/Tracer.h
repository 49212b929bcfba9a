#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/NonCopyable.h"

/// Runs strace on the daemon. Its child processes are traced only if an option says so.
class Tracer : private Orvel::NonCopyable {
 public:
  struct Call {
    std::size_t number = 0;  ///< position in the trace, from 1
    std::string name;
    unsigned nth = 0;  ///< position among the calls with this name, from 1
    std::string text;  ///< as strace prints it
  };

  ~Tracer() { detach(); }

  /// Traces a process until it ends or detach(), with further options of strace. False when strace fails.
  [[nodiscard]] bool attach(pid_t process, const std::string& options);
  void detach();
  /// The calls traced since attach(); call it after detach().
  static std::vector<Call> calls();
  /// Whether strace has injected its fault.
  static bool struck();
  /// Waits until a process has stopped (SIGSTOP).
  static bool awaitStop(pid_t process);

 private:
  pid_t strace_ = 0;
};
