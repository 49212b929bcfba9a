#pragma once

#include <httplib.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "simulator/console/Interpreter.h"

namespace Simulator {
/// Serves the gateway's page on 127.0.0.1. GET /events sends the data of Panes and the log as server-sent
/// events. POST /command runs a command; the answer is {"good", "text"}. A request from another web page, or
/// with another host name, gets status 403, so that no other page in the browser can control the gateway.
class PageServer {
 public:
  explicit PageServer(Interpreter& interpreter);
  ~PageServer();

  /// Listens on `port`; 0 chooses a free port. Returns false if the port is in use.
  [[nodiscard]] bool listen(int port);
  /// Returns "http://127.0.0.1:PORT/".
  std::string address() const;

 private:
  struct Sent;  ///< the data that the server has sent to one browser
  void addHandlers();
  bool isOwn(const httplib::Request& request) const;
  void follow(httplib::Response& response);
  bool sendNews(Sent& sent, httplib::DataSink& sink);
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
