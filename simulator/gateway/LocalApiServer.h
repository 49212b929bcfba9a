#pragma once

#include <json/value.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace Simulator {
/// A fault of the API. Code: the answer contains an error code. Garbage: the answer is not JSON. Close: the
/// connection is closed in the middle of the answer. Silent: there is no answer until a repair.
enum class ApiFault { None, Code, Garbage, Close, Silent };

/// The local HTTP API on a UNIX-domain socket: serves the settings, accepts commands, and keeps all requests.
class LocalApiServer {
 public:
  static constexpr char socketPath[] = "/var/run/api/http.sock";
  /// The names of the faults, in the order of ApiFault.
  static constexpr const char* faultNames[] = {"", "code", "garbage", "close", "silent"};

  struct Request {
    std::string method;
    std::string path;
    std::string body;
    bool answered = false;
    unsigned code = 0;  ///< the code in the answer; 0 if the answer contains no code
  };

  /// `settings` returns the settings that the API serves. A thread of the server calls `settings`.
  explicit LocalApiServer(std::function<Json::Value()> settings);
  ~LocalApiServer();

  /// Binds the socket and listens. Returns false on failure.
  bool listen();
  /// Stops listening. With `leaveSocket`, the socket's file stays, so that connections are refused.
  void close(bool leaveSocket);
  bool listening() const { return server_ != nullptr; }

  /// Sets the fault. Only ApiFault::Code uses `code`.
  void setFault(ApiFault fault, unsigned code);
  /// Returns the fault that is set, such as "code 500"; an empty string if no fault is set.
  std::string fault() const;

  /// Returns all requests from number `first` on. The first request has number 0.
  std::vector<Request> requests(std::size_t first = 0) const;
  unsigned waiting() const { return waiting_; }  ///< the number of requests that have no answer yet
  /// Returns how many seconds the last request has waited for a repair; nullopt if no request waits.
  std::optional<unsigned> silentSeconds() const;

 private:
  void handle(const httplib::Request& request, httplib::Response& response);
  Json::Value answer(const Request& request) const;

  const std::function<Json::Value()> settings_;
  mutable std::mutex mutex_;
  std::condition_variable repaired_;
  std::vector<Request> requests_;
  ApiFault fault_ = ApiFault::None;
  unsigned faultCode_ = 0;
  bool closing_ = false;
  std::atomic<unsigned> waiting_{0};
  std::chrono::steady_clock::time_point waitsSince_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
};
}  // namespace Simulator
