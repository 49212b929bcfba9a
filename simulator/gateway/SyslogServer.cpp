#include "simulator/gateway/SyslogServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {
constexpr std::size_t largestDatagram = 1 << 20;  // bytes
constexpr int infoLevel = 6;

// Parses "<14>Nov 24 22:05:40 VELD: text" (RFC 3164). The level is the number modulo 8. The time and the
// blank after it have 16 bytes.
SyslogServer::Line parse(const std::string& datagram) {
  std::size_t at = 0;
  int level = infoLevel;
  if (const std::size_t end = datagram.find('>');
      !datagram.empty() && datagram[0] == '<' && end != std::string::npos) {
    level = std::atoi(datagram.c_str() + 1) & 7;
    at = end + 1;
  }
  if (datagram.size() >= at + 16 && datagram[at + 3] == ' ' && datagram[at + 15] == ' ') at += 16;
  std::string text = datagram.substr(at);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\0')) text.pop_back();
  return {level, text};
}
}  // namespace

SyslogServer::SyslogServer() : buffer_(largestDatagram), thread_([this] { run(); }) {}

SyslogServer::~SyslogServer() {
  stop_ = true;
  thread_.join();
  close();
}

bool SyslogServer::listen() {
  close();
  sockaddr_un address{AF_UNIX, {}};
  std::strncpy(address.sun_path, socketPath, sizeof(address.sun_path) - 1);
  const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(fd);
    return false;
  }
  const std::lock_guard lock(mutex_);
  socket_ = fd;
  return true;
}

void SyslogServer::close() {
  drain();
  const std::lock_guard lock(mutex_);
  if (socket_ >= 0) {
    // Without shutdown(), the socket would accept lines until poll() in the other thread returns.
    shutdown(socket_, SHUT_RDWR);
    ::close(socket_);
  }
  socket_ = -1;
  unlink(socketPath);
}

void SyslogServer::run() {
  while (!stop_) {
    pollfd ready{socket_, POLLIN, 0};
    if (poll(&ready, 1, 20) > 0) drain();
  }
}

void SyslogServer::drain() {
  const std::lock_guard lock(mutex_);
  while (socket_ >= 0) {
    const ssize_t size = recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    if (size < 0) return;
    const Line line = parse({buffer_.data(), static_cast<std::size_t>(size)});
    lines_.push_back(line);
    appendFile(logFile, std::string(levelNames[line.level]) + " " + line.text + "\n");
  }
}

std::vector<SyslogServer::Line> SyslogServer::lines(std::size_t first) {
  drain();
  const std::lock_guard lock(mutex_);
  return {lines_.begin() + static_cast<std::ptrdiff_t>(first), lines_.end()};
}

std::vector<SyslogServer::Line> SyslogServer::read(bool onlyNew) {
  std::vector<Line> some = lines(onlyNew ? read_ : 0);
  read_ = some.size() + (onlyNew ? read_ : 0);
  return some;
}
}  // namespace Simulator
