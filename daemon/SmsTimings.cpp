#include "daemon/SmsTimings.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "support/Logger.h"

std::vector<std::uint32_t> smsTimings;

namespace {
constexpr char timingsFile[] = "/var/run/config/backofftimers_config";
constexpr char timingsKey[] = "timings-sms";
constexpr char timingsSeparators[] = "[,]";

// Reads the number at the start of `text` into `number`, clamped to the range of its type. If there is none,
// `number` keeps its value.
void readNumber(const char* text, std::int32_t& number) {
  char* end = nullptr;
  const long long read = std::strtoll(text, &end, 10);
  using Limits = std::numeric_limits<std::int32_t>;
  if (end != text)
    number = static_cast<std::int32_t>(std::clamp<long long>(read, Limits::min(), Limits::max()));
}

// Copies `text` into `value`. If it is too long, copies only the numbers that fit and returns false.
bool copyValue(const std::string& text, char* value) {
  const bool fits = text.size() < configValueSize;
  const std::size_t end = fits ? text.size() : text.find_last_of(timingsSeparators, configValueSize - 1);
  value[text.copy(value, end != std::string::npos ? end : 0)] = '\0';
  return fits;
}
}  // namespace

bool readSmsTimings() {
  char value[configValueSize] = {};
  readConfigValue(timingsFile, 1, timingsKey, value);
  std::int32_t seconds = 0;
  for (char* piece = std::strtok(value, timingsSeparators); piece != nullptr;
       piece = std::strtok(nullptr, timingsSeparators)) {
    readNumber(piece, seconds);
    smsTimings.push_back(static_cast<std::uint32_t>(seconds));
  }
  return smsTimings.empty();
}

int readConfigValue(const char* path, int flag, const char* key, char* value) {
  if (path == nullptr || key == nullptr || value == nullptr || flag < 0) return -1;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "r"), std::fclose);
  if (file == nullptr) return -1;
  char line[1024];
  bool fits = true;
  while (std::fgets(line, sizeof(line), file.get()) != nullptr) {
    const std::size_t length = std::strlen(line);
    if (length > 0) line[length - 1] = '\0';  // the line feed
    char* const equals = std::strchr(line, '=');
    if (equals == nullptr) continue;
    *equals = '\0';
    if (std::strcmp(line, key) == 0) fits = copyValue(equals + 1, value);
  }
  if (!fits) ORVEL_LOG(WARNING, "VELD: The value of %s is too long. It is cut to %s", key, value);
  return 1;
}
