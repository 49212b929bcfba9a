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

/// A fault of the API: none; it answers with another code; with no JSON; it closes the
/// connection in the middle of an answer; it does not answer until it is repaired.
enum class ApiFault { None, Code, Garbage, Close, Silent };

/// The gateway's local HTTP API on its UNIX-domain socket. It serves the settings, and accepts and keeps the
/// commands.
class LocalApiServer {
 public:
  static constexpr char socketPath[] = "/var/run/api/http.sock";
  /// The names of ApiFault, in its order.
  static constexpr const char* faultNames[] = {"", "code", "garbage", "close", "silent"};

  struct Request {
    std::string method;
    std::string path;
    std::string body;
    int code = 0;  ///< of the answer; 0 while there is none, noCode when it had none
  };
  static constexpr int noCode = -1;

  /// `settings` returns the settings object to serve. It is called on another thread.
  explicit LocalApiServer(std::function<Json::Value()> settings);
  ~LocalApiServer();

  /// Binds the socket and listens; false when it cannot.
  bool listen();
  /// Stops listening. With `leaveSocket` the socket's file stays, and connections are refused.
  void close(bool leaveSocket);
  bool listening() const { return server_ != nullptr; }

  /// `code` is that of ApiFault::Code.
  void setFault(ApiFault fault, unsigned code);
  /// The fault that is set, as "code 500"; empty if none.
  std::string fault() const;

  /// Every request so far from number `first` on, counting from 0, including those without an answer.
  std::vector<Request> requests(std::size_t first = 0) const;
  /// How many requests wait for their answer.
  unsigned waiting() const { return waiting_; }
  /// How long the last request has waited that gets no answer before a repair; none if there is none.
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
