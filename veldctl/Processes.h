#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A process, as /proc shows it.
struct Process {
  int pid = 0;
  int parent = 0;
  int session = 0;
  std::int64_t age = 0;  ///< seconds
  char name[16] = "";

  /// Whether this is a daemon, which is a session leader. A new child of a daemon has the name, too, until it
  /// executes its program, but is not a session leader.
  bool isDaemon() const;
  std::string folder() const;  ///< in /proc
};

/// Returns all processes except zombies.
std::vector<Process> processes();

bool isDaemonRunning();

/// The program that a process waits for.
struct Work {
  std::string commandLine;  ///< of the innermost descendant, below the shells; empty without a child
  std::int64_t age = 0;     ///< of the oldest descendant, in seconds
};
Work workOf(const Process& process, const std::vector<Process>& all);

/// Whether a daemon waits for the local API. It then has a second socket, beside that of syslog.
bool asksApi(const Process& daemon);
