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

/// A fault of the API. Code: answers with another code. Garbage: answers without JSON. Close: closes the
/// connection in the middle of an answer. Silent: does not answer before a repair.
enum class ApiFault { None, Code, Garbage, Close, Silent };

/// The local HTTP API on its UNIX-domain socket: serves the settings, accepts commands, keeps all requests.
class LocalApiServer {
 public:
  static constexpr char socketPath[] = "/var/run/api/http.sock";
  /// The names of ApiFault, in its order.
  static constexpr const char* faultNames[] = {"", "code", "garbage", "close", "silent"};

  struct Request {
    std::string method;
    std::string path;
    std::string body;
    bool answered = false;
    unsigned code = 0;  ///< of the answer; 0 if the answer had none
  };

  /// `settings` returns the settings object to serve. Another thread calls it.
  explicit LocalApiServer(std::function<Json::Value()> settings);
  ~LocalApiServer();

  /// Binds the socket and listens; false on failure.
  bool listen();
  /// Stops listening. With `leaveSocket` the socket's file stays, and connections are refused.
  void close(bool leaveSocket);
  bool listening() const { return server_ != nullptr; }

  /// `code` is for ApiFault::Code.
  void setFault(ApiFault fault, unsigned code);
  /// Returns the fault that is set, such as "code 500"; empty if there is none.
  std::string fault() const;

  /// Returns all requests from number `first` on, counting from 0, including those without an answer.
  std::vector<Request> requests(std::size_t first = 0) const;
  unsigned waiting() const { return waiting_; }  ///< requests without an answer so far
  /// Returns how many seconds the last request has waited for a repair; nullopt if there is no such request.
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
