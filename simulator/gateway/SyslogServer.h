#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Simulator {

/// The gateway's syslog: listens on /dev/log, keeps every line, and writes it to a file as far as the disk
/// has room.
class SyslogServer {
 public:
  static constexpr char socketPath[] = "/dev/log";
  static constexpr char logFile[] = "/var/log/syslog";

  static constexpr const char* levelNames[] = {"EMERGENCY", "ALERT",  "CRITICAL", "ERROR",
                                               "WARNING",   "NOTICE", "INFO",     "DEBUG"};

  struct Line {
    int level;  ///< of syslog, the index of its name
    std::string text;
  };

  SyslogServer();
  ~SyslogServer();

  /// Listens, or stops to. False when the socket cannot be bound.
  bool listen();
  void close();
  bool listening() const { return socket_ >= 0; }

  /// All lines so far, from number `first` on, counting from 0; what was sent before the call is among them.
  std::vector<Line> lines(std::size_t first = 0);
  /// The same for a reader: all of them, or those since it read last.
  std::vector<Line> read(bool onlyNew);

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
