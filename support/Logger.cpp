#include "support/Logger.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/FileDescriptor.h"
#include "support/Text.h"

namespace Orvel {
namespace {
Logger::PrintMode currentMode = Logger::PrintMode::StandardError;
std::string syslogIdent;  // openlog keeps a pointer to this text

bool connects(int type) {
  const FileDescriptor descriptor(socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
  if (!descriptor.isOpen()) return false;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, _PATH_LOG, sizeof(address.sun_path) - 1);
  return connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

// Like the C library's syslog(), tries a datagram socket first and then a stream socket.
bool syslogListens() { return connects(SOCK_DGRAM) || connects(SOCK_STREAM); }

int syslogPriority(int level) {
  constexpr int priorities[] = {LOG_DEBUG, LOG_DEBUG, LOG_INFO, LOG_WARNING, LOG_ERR, LOG_CRIT};
  const bool isKnown = level >= Logger::PrintLevel::TRACE_LEVEL && level <= Logger::PrintLevel::FATAL_LEVEL;
  return isKnown ? priorities[level] : LOG_DEBUG;
}
}  // namespace

bool Logger::setup(const PrintMode& mode, const std::string& ident, const int& option, const int& facility) {
  if (mode != PrintMode::Syslog) return setup(mode);
  if (ident.empty() || !syslogListens()) return false;
  closelog();
  syslogIdent = ident;
  openlog(syslogIdent.c_str(), option, facility);
  currentMode = mode;
  return true;
}

bool Logger::setup(const PrintMode& mode) {
  if (mode == PrintMode::Syslog) return false;
  currentMode = mode;
  return true;
}

bool Logger::isPrintable(int level) { return level >= PrintLevel::VELD_LOG_LEVEL; }

void Logger::printfGeneric(int level, const char* label, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char* formatted = nullptr;
  const int length = vasprintf(&formatted, format, arguments);
  va_end(arguments);
  if (length < 0) return;
  const std::unique_ptr<char, decltype(&std::free)> owner(formatted, std::free);
  const std::string text = Text::printable(formatted);
  if (currentMode == PrintMode::Syslog)
    syslog(syslogPriority(level), "[%s] %s", label, text.c_str());
  else
    std::fprintf(stderr, "[%s] %s\n", label, text.c_str());
}
}  // namespace Orvel
