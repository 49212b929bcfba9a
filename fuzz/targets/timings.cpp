// The input is the back-off timers file, which contains the intervals between retries.

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "daemon/SmsTimings.h"
#include "fuzz/shared/Property.h"

namespace {
constexpr char key[] = "timings-sms";
std::string content;  // of the files that fopen() below opens

std::string valueOf(const char* wanted) {
  const std::vector<char> untouched(configValueSize, '\0');
  std::vector<char> value = untouched;
  property(readConfigValue("any", 1, wanted, value.data()) == 1, "a file that can be opened can be read");
  property(std::memchr(value.data(), '\0', value.size()) != nullptr, "a value ends within its buffer");
  return value.data();
}

// Reads the intervals in `value`. Returns false if a number has more than nine digits.
bool readIntervals(const std::string& value, std::vector<std::uint32_t>& intervals) {
  int seconds = 0;
  for (std::size_t at = value.find_first_not_of("[,]"); at != std::string::npos;) {
    const std::size_t end = std::min(value.find_first_of("[,]", at), value.size());
    const std::string piece = value.substr(at, end - at);
    if (piece.size() > 9) return false;
    std::sscanf(piece.c_str(), "%d", &seconds);
    intervals.push_back(static_cast<std::uint32_t>(seconds));
    at = value.find_first_not_of("[,]", end);
  }
  return true;
}
}  // namespace

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
  const bool isOurs = std::strcmp(path, "any") == 0 || std::strstr(path, "backofftimers_config") != nullptr;
  if (isOurs) return fmemopen(content.data(), content.size(), mode);
  using Open = std::FILE* (*)(const char*, const char*);
  return reinterpret_cast<Open>(dlsym(RTLD_NEXT, "fopen"))(path, mode);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  content.assign(data, data + size);
  const std::string value = valueOf(key);
  property(value.empty() || content.find("timings-sms=" + value) != std::string::npos,
           "the file contains the value after its key");

  std::vector<std::uint32_t> expected;
  smsTimings.clear();
  property(readSmsTimings() == smsTimings.empty(),
           "readSmsTimings() reports a failure if and only if it finds no interval");
  if (readIntervals(value, expected))
    property(smsTimings == expected, "a piece without a number repeats the previous interval");

  content += "\ntimings-sms=[30,60]\n";
  property(valueOf(key) == "[30,60]", "the last line with a key determines the value");
  property(valueOf("timings") == "" || content.find("timings=") != std::string::npos,
           "a key does not match the beginning of a longer key");
  return 0;
}

}  // extern "C"
