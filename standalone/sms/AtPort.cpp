#include "standalone/sms/AtPort.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "standalone/sms/Modem.h"

namespace Standalone {
namespace {
constexpr char escape = 0x1B;  // cancels a prompt for data
constexpr char endOfData = 0x1A;
constexpr std::chrono::milliseconds firstAnswer(2000);

bool beginsWith(const std::string& line, const char* prefix) {
  return line.compare(0, std::strlen(prefix), prefix) == 0;
}

bool isError(const std::string& line) {
  return line == "ERROR" || beginsWith(line, "+CME ERROR") || beginsWith(line, "+CMS ERROR");
}

// Returns true for an unsolicited line. A modem may send such lines between the lines of an answer.
bool isUnsolicited(const std::string& line) {
  for (const char* const prefix : {"+CMTI:", "+CDSI:", "+CMT:", "+CDS:", "RING", "^", "+CRING:"})
    if (beginsWith(line, prefix)) return true;
  return false;
}
}  // namespace

std::string AtPort::Answer::value(const std::string& prefix) const {
  for (const std::string& line : lines)
    if (beginsWith(line, prefix.c_str())) {
      const std::size_t begin = line.find_first_not_of(' ', prefix.size());
      return begin == std::string::npos ? "" : line.substr(begin);
    }
  return "";
}

AtPort::AtPort(const std::string& device, const Deadline& deadline) : device_(device), deadline_(deadline) {
  open();
  // The escape ends a prompt that a killed run of the tool left open. A modem may miss its first command, so
  // this is tried again.
  for (unsigned tries = 0; tries < 3; ++tries) {
    write(std::string(1, escape) + "ATE1\r");
    while (pending_.find("OK\r") == std::string::npos)
      if (!readMore(deadline_.left(firstAnswer))) break;
    if (pending_.find("OK\r") == std::string::npos) continue;
    pending_.clear();
    return;
  }
  close(port_);
  throw Problem("the modem at " + device_ + " does not answer");
}

AtPort::~AtPort() { close(port_); }

void AtPort::open() {
  port_ = ::open(device_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (port_ < 0) throw Problem("no modem: cannot open " + device_ + ": " + std::strerror(errno));
  termios line{};
  if (tcgetattr(port_, &line) != 0) {
    close(port_);
    throw Problem(device_ + " is not a serial port");
  }
  cfmakeraw(&line);
  line.c_cflag |= CLOCAL | CREAD;
  line.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
  cfsetspeed(&line, B115200);
  tcsetattr(port_, TCSANOW, &line);
  tcflush(port_, TCIOFLUSH);
}

void AtPort::write(const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    pollfd writable{port_, POLLOUT, 0};
    const int ready = poll(&writable, 1, static_cast<int>(deadline_.left().count()));
    const ssize_t count = ready > 0 ? ::write(port_, bytes.data() + done, bytes.size() - done) : -1;
    if (count < 0) throw Problem("the modem at " + device_ + " does not accept commands");
    done += static_cast<std::size_t>(count);
  }
}

// Reads the bytes that have arrived. Returns false if none arrive within `bound`. Throws a Problem if the
// modem was unplugged.
bool AtPort::readMore(std::chrono::milliseconds bound) {
  pollfd readable{port_, POLLIN, 0};
  if (poll(&readable, 1, static_cast<int>(bound.count())) <= 0) return false;
  char bytes[4096];
  const ssize_t count = read(port_, bytes, sizeof bytes);
  if (count <= 0) throw Problem("the modem at " + device_ + " is gone");
  pending_.append(bytes, static_cast<std::size_t>(count));
  return true;
}

// Returns the next line that is not empty, without its line end.
std::string AtPort::nextLine() {
  while (true) {
    const std::size_t end = pending_.find_first_of("\r\n");
    if (end == std::string::npos) {
      if (!readMore(deadline_.left())) throw Problem("the modem at " + device_ + " does not answer in time");
      continue;
    }
    const std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    if (!line.empty()) return line;
  }
}

void AtPort::awaitEcho(const std::string& command) {
  while (nextLine() != command) {
  }
}

AtPort::Answer AtPort::readAnswer() {
  Answer answer;
  while (true) {
    const std::string line = nextLine();
    if (line == "OK") return answer;
    if (isError(line)) {
      answer.error = line;
      return answer;
    }
    if (!isUnsolicited(line)) answer.lines.push_back(line);
  }
}

AtPort::Answer AtPort::ask(const std::string& command) {
  write(command + "\r");
  awaitEcho(command);
  return readAnswer();
}

// Waits until pending_ contains the prompt "> " or an error line. Leaves both in pending_.
void AtPort::awaitPrompt() {
  while (pending_.find("> ") == std::string::npos && pending_.find("ERROR") == std::string::npos)
    if (!readMore(deadline_.left()))
      throw Problem("the modem at " + device_ + " does not prompt for the message");
}

AtPort::Answer AtPort::ask(const std::string& command, const std::string& data) {
  write(command + "\r");
  awaitEcho(command);
  awaitPrompt();
  if (pending_.find("> ") == std::string::npos) return readAnswer();
  pending_.clear();
  write(data + endOfData);
  return readAnswer();
}

AtPort::Answer AtPort::demand(const std::string& command) {
  Answer answer = ask(command);
  if (!answer.error.empty()) throw Problem("the modem refuses " + command + ": " + answer.error);
  return answer;
}
}  // namespace Standalone
