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

/// What the API does wrong: nothing; answers with another code; with no JSON; after some seconds; closes the
/// connection in the middle of an answer; does not answer until it is put right.
enum class ApiFault { None, Code, Garbage, Slow, Close, Silent };

/// The gateway's local HTTP API on its UNIX-domain socket: the settings, and the commands, which it accepts
/// and keeps.
class LocalApiServer {
 public:
  static constexpr char socketPath[] = "/var/run/api/http.sock";
  /// Of ApiFault, in its order.
  static constexpr const char* faultNames[] = {"", "code", "garbage", "slow", "close", "silent"};

  struct Request {
    std::string method;
    std::string path;
    std::string body;
    int code = 0;  ///< of the answer; 0 while there is none, noCode when it had none
  };
  static constexpr int noCode = -1;

  /// `settings` gives the settings object that is to be served; it is called on another thread.
  explicit LocalApiServer(std::function<Json::Value()> settings);
  ~LocalApiServer();

  /// Listens; false when it cannot.
  bool listen();
  /// Stops listening. The socket's file stays if `leaveSocket`: a connection is then refused.
  void close(bool leaveSocket);
  bool listening() const { return server_ != nullptr; }

  /// `value`: the code of ApiFault::Code, the seconds of ApiFault::Slow.
  void setFault(ApiFault fault, unsigned value);
  /// What is set, as "slow 3"; empty if nothing.
  std::string fault() const;

  /// Every request so far, from number `first` on, counting from 0; also those that a fault kept from an
  /// answer.
  std::vector<Request> requests(std::size_t first = 0) const;
  /// How many of them are waiting for their answer.
  unsigned waiting() const { return waiting_; }
  /// How long the last of them has waited that gets no answer before the API is put right; none if there is
  /// none.
  std::optional<unsigned> silentSeconds() const;

 private:
  void handle(const httplib::Request& request, httplib::Response& response);
  Json::Value answer(const Request& request) const;

  const std::function<Json::Value()> settings_;
  mutable std::mutex mutex_;
  std::condition_variable repaired_;
  std::vector<Request> requests_;
  ApiFault fault_ = ApiFault::None;
  unsigned faultValue_ = 0;
  bool closing_ = false;
  std::atomic<unsigned> waiting_{0};
  std::chrono::steady_clock::time_point waitsSince_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
};

}  // namespace Simulator
