#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// strace on the daemon alone, not on what it starts.
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

  /// Traces a process until it ends or detach(). `injection`: what is to happen at a call, in strace's words,
  /// as in "openat:error=EIO:when=3"; empty: nothing. False when the process cannot be traced.
  [[nodiscard]] bool attach(pid_t process, const std::string& injection);
  void detach();
  /// The calls since attach(), those of `injection` alone if there was one. To be called after detach().
  static std::vector<Call> calls();
  /// Whether the injection came about.
  static bool struck();

  /// A program under the same name that starts `daemon` with `preloaded` and stops it as soon as it has
  /// detached, when it is its own process and has done nothing yet.
  static std::string stoppingOnce(const std::string& daemon, const std::string& preloaded);
  /// Waits until a daemon that was started so has stopped; false when it does not.
  static bool awaitStop(pid_t process);

 private:
  pid_t strace_ = 0;
};
