#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// Runs strace on the daemon. What the daemon starts is not traced, unless an option says so.
class Tracer {
 public:
  struct Call {
    unsigned number = 0;  ///< in the trace, from 1
    std::string name;
    unsigned nth = 0;  ///< among those of the name, from 1
    std::string text;  ///< as strace prints it
  };

  Tracer() = default;
  ~Tracer() { detach(); }
  Tracer(const Tracer&) = delete;
  Tracer& operator=(const Tracer&) = delete;

  /// Traces a process until it ends or detach(), with further options of strace. False when it cannot.
  [[nodiscard]] bool attach(pid_t process, std::vector<std::string> options);
  void detach();
  /// What was traced since attach(); to be called after detach().
  static std::vector<Call> calls();
  /// Whether strace has injected its fault.
  static bool struck();

  /// Makes a program with the name of `daemon` that starts it, unchanged, with `preloaded`. Gives its path.
  static std::string stoppable(const std::string& daemon, const std::string& preloaded);
  /// Lets the next daemon that such a program starts stop as soon as it has a process of its own.
  static bool stopNext();
  /// Waits until a daemon that was started so has stopped; false when it does not.
  static bool awaitStop(pid_t process);

 private:
  pid_t strace_ = 0;
};
