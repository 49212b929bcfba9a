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

  /// Whether it is a daemon: it leads a session. What it starts bears its name for a moment, but leads none.
  bool isDaemon() const;
  std::string folder() const;  ///< in /proc
};

/// All processes but zombies.
std::vector<Process> processes();

bool isDaemonRunning();

/// The command line of the last of the children of `process`, their children and so on: the shells between
/// say less. Empty without a child.
struct Work {
  std::string commandLine;
  std::int64_t age = 0;  ///< of the oldest of them, in seconds
};
Work workOf(const Process& process, const std::vector<Process>& all);

/// Whether a daemon waits for the local API: it then has a socket beside that of syslog.
bool asksApi(const Process& daemon);
