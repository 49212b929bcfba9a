#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

/// Writes and reads times and intervals. All times are local.
namespace Times {
std::string full(std::time_t time);      ///< 2026-11-25 14:03:22
std::string brief(std::time_t time);     ///< 11-25 14:03
std::string withZone(std::time_t time);  ///< 2026-11-25T14:03:22+01:00, as in ISO 8601

/// Returns an interval in a suitable unit: "40 s", "12 min", "3 h", "5 d".
std::string span(std::int64_t seconds);

/// Reads "2026-11-25", "2026-11-25 14:00", "2026-11-25 14:00:30", or an interval before `now`: a number with
/// s, min, h or d. Returns nullopt for any other text.
std::optional<std::time_t> parse(const std::string& text, std::time_t now);
}  // namespace Times
