#include "veldctl/Times.h"

#include <cstdint>
#include <iomanip>
#include <sstream>

#include "veldctl/Command.h"

namespace {
constexpr std::int64_t minute = 60, hour = 60 * minute, day = 24 * hour;

std::string format(std::time_t time, const char* form) {
  std::ostringstream text;
  text << std::put_time(std::localtime(&time), form);
  return text.str();
}

std::optional<std::time_t> parseDate(const std::string& text) {
  for (const char* const form : {"%Y-%m-%d", "%Y-%m-%d %H:%M", "%Y-%m-%d %H:%M:%S"}) {
    std::tm time{};
    time.tm_isdst = -1;
    const char* const end = strptime(text.c_str(), form, &time);
    if (end != nullptr && *end == '\0') return std::mktime(&time);
  }
  return std::nullopt;
}

std::optional<std::int64_t> parseSpan(const std::string& text) {
  const std::size_t digits = text.find_first_not_of("0123456789");
  if (digits == std::string::npos) return std::nullopt;
  const std::optional<std::uint32_t> number = readNumber(text.substr(0, digits));
  if (!number) return std::nullopt;
  const std::string unit = text.substr(digits);
  if (unit == "s") return *number;
  if (unit == "min") return *number * minute;
  if (unit == "h") return *number * hour;
  if (unit == "d") return *number * day;
  return std::nullopt;
}
}  // namespace

std::string Times::full(std::time_t time) { return format(time, "%F %T"); }

std::string Times::brief(std::time_t time) { return format(time, "%m-%d %H:%M"); }

std::string Times::withZone(std::time_t time) {
  return format(time, "%FT%T%z").insert(sizeof("2026-11-25T14:03:22+01") - 1, ":");
}

std::string Times::span(std::int64_t seconds) {
  if (seconds < 2 * minute) return std::to_string(seconds) + " s";
  if (seconds < 2 * hour) return std::to_string(seconds / minute) + " min";
  if (seconds < 2 * day) return std::to_string(seconds / hour) + " h";
  return std::to_string(seconds / day) + " d";
}

std::optional<std::time_t> Times::parse(const std::string& text, std::time_t now) {
  if (const auto date = parseDate(text)) return date;
  const auto span = parseSpan(text);
  if (!span) return std::nullopt;
  return static_cast<std::time_t>(now - *span);
}
