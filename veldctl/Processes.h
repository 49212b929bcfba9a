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

  /// Returns true if this is a daemon: a session leader with the name veld. A new child of a daemon also has
  /// this name, until the child executes its program, but the child is not a session leader.
  bool isDaemon() const;
  std::string folder() const;  ///< the path of its folder in /proc
};

/// Returns all processes except zombies.
std::vector<Process> processes();

bool isDaemonRunning();

/// The program that a process waits for.
struct Work {
  std::string commandLine;  ///< of the program itself, not of the shells that start it; empty without a child
  std::int64_t age = 0;     ///< the age of the oldest child process, in seconds
};
Work workOf(const Process& process, const std::vector<Process>& all);

/// Returns true if a daemon waits for the local API. It then has two sockets, for syslog and for the API.
bool asksApi(const Process& daemon);
