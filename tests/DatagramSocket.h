#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <string>

/// A UNIX-domain socket that receives datagrams. Its name is a path, or "@" and an abstract name.
class DatagramSocket {
 public:
  explicit DatagramSocket(const std::string& name) : name_(name), fd_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (name[0] == '@') address.sun_path[0] = '\0';
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&address), size), 0);
  }
  ~DatagramSocket() {
    close(fd_);
    unlink(name_.c_str());
  }
  DatagramSocket(const DatagramSocket&) = delete;
  DatagramSocket& operator=(const DatagramSocket&) = delete;

  /// Returns the next datagram; empty if none has arrived.
  std::string receive() {
    std::string text(100000, '\0');
    const ssize_t length = recv(fd_, text.data(), text.size(), MSG_DONTWAIT);
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return text;
  }

 private:
  const std::string name_;
  const int fd_;
};
