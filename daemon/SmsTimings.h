#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The gateway's back-off timers file: the intervals after which a failed message is sent again.

/// The intervals in seconds, in the order of the file. Filled once at start-up. When it is empty, failed
/// messages are never sent again. A negative number in the file is a huge interval here.
extern std::vector<std::uint32_t> smsTimings;

/// Reads `smsTimings` from the timers file. True on FAILURE: the file, its key or every number is missing. An
/// element that is not a number repeats the one before it; the first one counts as 0.
bool readSmsTimings();

/// Size in bytes of readConfigValue's buffer, the terminator included.
constexpr std::size_t configValueSize = 128;

/// Copies the value of `key` from the key=value file at `path` into `value`. The last line with the key wins.
/// Of a value that is too long, copies only the numbers that fit, and logs one line. If the file does not
/// end with a line feed, its last character is lost. A line of more than 1023 characters counts as several.
///
/// Returns -1 when an argument is null, `flag` is negative or the file cannot be opened. Otherwise 1; if the
/// key is missing, `value` is unchanged. `flag` has no other effect.
int readConfigValue(const char* path, int flag, const char* key, char* value);
