#pragma once

#include <httplib.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Serves the gateway's page on 127.0.0.1: its files, the data of Panes and the log as server-sent events
/// (GET /events), and commands (POST /command with a line of text; the answer is {"good", "text"}). A request
/// that names another host or comes from another page gets status 403, so that no other web page in the
/// browser can reach the gateway.
class PageServer {
 public:
  explicit PageServer(Interpreter& interpreter);
  ~PageServer();

  /// Listens; `port` 0 takes any free port. False when the port is taken.
  [[nodiscard]] bool listen(int port);
  /// "http://127.0.0.1:PORT/"
  std::string address() const;

 private:
  struct Seen;  // what was sent to one browser
  void addHandlers();
  bool isOwn(const httplib::Request& request) const;
  void follow(httplib::Response& response);
  bool sendNews(Seen& seen, httplib::DataSink& sink);
  void watch();

  Interpreter& interpreter_;
  httplib::Server server_;
  int port_ = 0;
  std::mutex mutex_;
  std::map<std::string, std::string> panes_;
  std::atomic<bool> stop_{false};
  std::atomic<unsigned> followers_{0};
  std::thread watcher_;
  std::thread listener_;
};

}  // namespace Simulator
