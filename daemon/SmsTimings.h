#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The gateway's back-off timers file: after how many seconds a failed message is sent again.

/// The intervals in seconds, in the file's order; filled once at start-up. When it is empty, failed messages
/// are never sent again. A negative number in the file is huge here.
extern std::vector<std::uint32_t> smsTimings;

/// Reads `smsTimings` from the timers file. True on FAILURE: when the file, its key or every number is
/// missing. A piece that is no number repeats the one before it, or counts as 0.
bool readSmsTimings();

/// Bytes that readConfigValue's buffer needs, the terminator included; a longer value is cut.
constexpr std::size_t configValueSize = 128;

/// Copies the value of `key` from the key=value file at `path` into `value`; of several lines with the key
/// the last one counts. The last character of the file is lost when it is no line feed, and a line of more
/// than 1023 characters counts as several.
///
/// -1 when an argument is null, `flag` is negative or the file cannot be opened; else 1, with `value` as it
/// was when the key is missing. `flag` does nothing else.
int readConfigValue(const char* path, int flag, const char* key, char* value);
