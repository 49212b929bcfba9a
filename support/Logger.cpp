#include "support/Logger.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace Orvel {
namespace {

Logger::PrintMode currentMode = Logger::PrintMode::StandardError;
std::string syslogIdent;  // openlog keeps a pointer to its text

bool connects(int type) {
  const int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, _PATH_LOG, sizeof(address.sun_path) - 1);
  const bool connected = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(fd);
  return connected;
}

// The C library's syslog tries a datagram socket and then a stream.
bool syslogListens() { return connects(SOCK_DGRAM) || connects(SOCK_STREAM); }

int syslogPriority(int level) {
  switch (level) {
    case Logger::PrintLevel::FATAL_LEVEL:
      return LOG_CRIT;
    case Logger::PrintLevel::ERROR_LEVEL:
      return LOG_ERR;
    case Logger::PrintLevel::WARNING_LEVEL:
      return LOG_WARNING;
    case Logger::PrintLevel::INFO_LEVEL:
      return LOG_INFO;
    default:
      return LOG_DEBUG;
  }
}

unsigned byteAt(std::string_view text, std::size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

// The bytes of the UTF-8 character that `text` begins with; 0 when it is a control character (U+0000 to
// U+001F, U+007F to U+009F) or no UTF-8.
std::size_t printableLength(std::string_view text) {
  const unsigned first = byteAt(text, 0);
  if (first < 0x80) return first >= 0x20 && first != 0x7F ? 1 : 0;
  if (first < 0xC0 || first >= 0xF8) return 0;
  const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  std::uint32_t character = first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned next = byteAt(text, i);
    if ((next & 0xC0) != 0x80) return 0;
    character = character << 6 | (next & 0x3F);
  }
  constexpr std::uint32_t least[] = {0xA0, 0x800, 0x10000};  // what is below has a shorter form
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  return character >= least[length - 2] && character <= 0x10FFFF && !surrogate ? length : 0;
}

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = printableLength(text);
    if (length > 0) {
      shown += text.substr(0, length);
    } else {
      char escape[sizeof("#000")];
      std::snprintf(escape, sizeof(escape), "#%03o", byteAt(text, 0));
      shown += escape;
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
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
  const std::string text = printable(formatted);
  if (currentMode == PrintMode::Syslog)
    syslog(syslogPriority(level), "[%s] %s", label, text.c_str());
  else
    std::fprintf(stderr, "[%s] %s\n", label, text.c_str());
}

}  // namespace Orvel
