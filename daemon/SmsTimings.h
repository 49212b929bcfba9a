#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The gateway's back-off timers file: the intervals after which a failed message is sent again.

/// The intervals in seconds, in the order of the file. Filled once at start-up. When it is empty, failed
/// messages are never sent again. A negative number in the file is a huge interval here.
extern std::vector<std::uint32_t> smsTimings;

/// Reads `smsTimings` from the timers file. True on FAILURE: the file, its key or every number is missing. A
/// piece that is no number repeats the one before it, or counts as 0.
bool readSmsTimings();

/// Size in bytes of readConfigValue's buffer, the terminator included.
constexpr std::size_t configValueSize = 128;

/// Copies the value of `key` from the key=value file at `path` into `value`. The last line with the key
/// counts. A value that does not fit is cut behind its last whole number, and one line is logged. The last
/// character of the file is lost when it is no line feed, and a line of more than 1023 characters counts as
/// several.
///
/// Returns -1 when an argument is null, `flag` is negative or the file cannot be opened. Otherwise 1; without
/// the key `value` keeps its content. `flag` has no other effect.
int readConfigValue(const char* path, int flag, const char* key, char* value);
