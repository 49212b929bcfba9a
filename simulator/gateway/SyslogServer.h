#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Simulator {

/// The gateway's syslog: keeps each line from /dev/log and appends it to a file, unless the disk is full.
class SyslogServer {
 public:
  static constexpr char socketPath[] = "/dev/log";
  static constexpr char logFile[] = "/var/log/syslog";

  static constexpr const char* levelNames[] = {"EMERGENCY", "ALERT",  "CRITICAL", "ERROR",
                                               "WARNING",   "NOTICE", "INFO",     "DEBUG"};

  struct Line {
    int level;  ///< as syslog numbers it; an index of levelNames
    std::string text;
  };

  SyslogServer();
  ~SyslogServer();

  bool listen();  ///< binds the socket; false on failure
  void close();
  bool listening() const { return socket_ >= 0; }

  /// Returns all lines from number `first` on, counting from 0, including those sent just before the call.
  std::vector<Line> lines(std::size_t first = 0);
  std::vector<Line> read(bool onlyNew);  ///< all lines, or those since the last call

 private:
  void run();
  void drain();

  std::mutex mutex_;
  std::vector<Line> lines_;
  std::vector<char> buffer_;
  std::size_t read_ = 0;
  std::atomic<int> socket_{-1};
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace Simulator
