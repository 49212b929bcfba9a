#pragma once

#include <httplib.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// Serves the page of the gateway on 127.0.0.1: its files, what there is to see as it changes (server-sent
/// events at /events), and commands (POST /command, a line of text; the answer is {"good", "text"}). A
/// request that names another host or comes from another page is refused with 403: a web page that a person
/// looks at elsewhere must not reach the gateway.
class PageServer {
 public:
  explicit PageServer(Interpreter& interpreter);
  ~PageServer();

  /// Listens; `port` 0 takes any that is free. False when that one is taken.
  [[nodiscard]] bool listen(int port);
  /// Where it listens: "http://127.0.0.1:PORT/".
  std::string address() const;

 private:
  struct Seen;  // what one browser has been sent
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
