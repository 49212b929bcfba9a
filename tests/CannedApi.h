#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "daemon/LocalApi.h"

/// A local API for one connection. It records the request, sends the given bytes and closes the connection.
class CannedApi {
 public:
  explicit CannedApi(const std::string& answer) : socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {
    std::filesystem::create_directories(std::filesystem::path(localApiSocket).parent_path());
    std::filesystem::remove(localApiSocket);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string(localApiSocket).copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    listen(socket_, 1);
    thread_ = std::thread([this, answer] { serve(answer); });
    // Waits until the thread runs. An earlier fork could copy a locked mutex of the sanitizer's allocator.
    while (!accepts_) std::this_thread::yield();
  }
  ~CannedApi() { request(); }
  CannedApi(const CannedApi&) = delete;
  CannedApi& operator=(const CannedApi&) = delete;

  /// Returns an HTTP answer with the given body.
  static std::string ok(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  }

  /// Ends the API after a request that has begun. Returns the request; empty if no request arrived.
  const std::string& request() {
    if (thread_.joinable()) {
      shutdown(socket_, SHUT_RDWR);
      thread_.join();
      close(socket_);
      std::filesystem::remove(localApiSocket);
    }
    return request_;
  }

 private:
  void serve(const std::string& answer) {
    accepts_ = true;
    const int connection = accept(socket_, nullptr, nullptr);
    char bytes[4096];
    while (connection >= 0 && !complete()) {
      const ssize_t count = recv(connection, bytes, sizeof(bytes), 0);
      if (count <= 0) break;
      request_.append(bytes, static_cast<std::size_t>(count));
    }
    if (connection < 0) return;
    send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
    close(connection);
  }

  bool complete() const {
    const std::size_t head = request_.find("\r\n\r\n");
    if (head == std::string::npos) return false;
    const std::size_t length = request_.find("Content-Length: ");
    const std::size_t body = length == std::string::npos ? 0 : std::stoul(request_.substr(length + 16));
    return request_.size() >= head + 4 + body;
  }

  int socket_;
  std::string request_;
  std::atomic<bool> accepts_ = false;
  std::thread thread_;
};
