#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Simulator {
/// The gateway's syslog. Keeps each line from /dev/log. If the disk is not full, appends the line to a file.
class SyslogServer {
 public:
  static constexpr char socketPath[] = "/dev/log";
  static constexpr char logFile[] = "/var/log/syslog";

  static constexpr const char* levelNames[] = {"EMERGENCY", "ALERT",  "CRITICAL", "ERROR",
                                               "WARNING",   "NOTICE", "INFO",     "DEBUG"};

  struct Line {
    int level;  ///< the severity from 0 to 7, an index of levelNames
    std::string text;
  };

  SyslogServer();
  ~SyslogServer();

  bool listen();  ///< binds the socket; returns false on failure
  void close();
  bool listening() const { return socket_ >= 0; }

  /// Returns all lines from number `first` on, up to the moment of this call. The first line has number 0.
  std::vector<Line> lines(std::size_t first = 0);
  std::vector<Line> read(bool onlyNew);  ///< returns all lines, or the lines since the last call of read()

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
