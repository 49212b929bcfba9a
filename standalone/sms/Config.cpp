#include "standalone/sms/Config.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "standalone/sms/Modem.h"

namespace Standalone {
namespace {
std::string trim(const std::string& text) {
  constexpr char blanks[] = " \t\r";
  const std::size_t begin = text.find_first_not_of(blanks);
  return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}
}  // namespace

Config Config::read(const std::string& file) {
  Config config;
  std::ifstream in(file);
  if (!in && errno != ENOENT) throw Problem("cannot read " + file + ": " + std::strerror(errno));
  unsigned number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    line = trim(line);
    if (line.empty() || line[0] == '#') continue;
    const std::size_t sign = line.find('=');
    const std::string key = trim(line.substr(0, sign));
    const std::string value = sign == std::string::npos ? "" : trim(line.substr(sign + 1));
    if (key == "port" && !value.empty())
      config.port = value;
    else if (key == "pin" && value.find_first_not_of("0123456789") == std::string::npos)
      config.pin = value;
    else
      throw Problem(file + ", line " + std::to_string(number) +
                    ": expected \"port = DEVICE\" or \"pin = DIGITS\"");
  }
  return config;
}
}  // namespace Standalone
