#include <cstdlib>

#include "tests/Rows.h"
#include "veldctl/Times.h"

namespace {
constexpr std::time_t now = 1'800'000'000;  // 2027-01-15 08:00:00 UTC

void setZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

const Row<const char*, std::optional<std::time_t>> parseRows[] = {
    {"Seconds", "90s", now - 90},
    {"Minutes", "30min", now - 1800},
    {"Hours", "2h", now - 7200},
    {"Days", "3d", now - 259200},
    {"Date", "2027-01-15", now - 8 * 3600},
    {"Minute", "2027-01-15 08:01", now + 60},
    {"Second", "2027-01-15 08:00:01", now + 1},
    {"NoUnit", "30", std::nullopt},
    {"UnknownUnit", "1y", std::nullopt},
    {"NoNumber", "h", std::nullopt},
    {"TrailingText", "2027-01-15 8h", std::nullopt},
};
TEST_ROWS(Parse, ReadsSpansAndDates, parseRows) {
  setZone("UTC");
  EXPECT_EQ(Times::parse(GetParam().given, now), GetParam().expected);
}

TEST(WithZone, AppendsTheOffsetFromUtc) {
  setZone("XYZ-5:30");
  EXPECT_EQ(Times::withZone(now), "2027-01-15T13:30:00+05:30");
}

const Row<std::int64_t, const char*> spanRows[] = {
    {"LastSeconds", 119, "119 s"}, {"Minutes", 120, "2 min"},     {"LastMinutes", 7199, "119 min"},
    {"Hours", 7200, "2 h"},        {"LastHours", 172799, "47 h"}, {"Days", 172800, "2 d"},
};
TEST_ROWS(Span, HasASuitableUnit, spanRows) { EXPECT_EQ(Times::span(GetParam().given), GetParam().expected); }
}  // namespace
