#pragma once

#include <optional>
#include <string>

namespace Standalone {
/// Conversions between UTF-8 and the encodings of the network (3GPP TS 23.038).

/// Converts GSM 7-bit codes, one code per byte, to UTF-8. Uses the default alphabet and its extension table.
/// Ignores an escape before a code that the extension table lacks.
std::string fromGsm(const std::string& codes);

/// Converts big-endian UTF-16 to UTF-8. Replaces half a surrogate pair, a single last octet, and U+0000 by
/// U+FFFD. A line of a listing cannot contain U+0000.
std::string fromUtf16(const std::string& octets);

/// Converts `text` to GSM 7-bit codes, one code per byte. Returns nullopt if a character is in neither table.
std::optional<std::string> toGsm(const std::string& text);

/// Converts `text` to big-endian UTF-16. Returns nullopt if `text` is not valid UTF-8.
std::optional<std::string> toUtf16(const std::string& text);

bool isUtf8(const std::string& text);

/// Returns the octets as upper-case hexadecimal digits.
std::string toHex(const std::string& octets);

/// Converts hexadecimal digits of either case to octets. Returns nullopt if a digit is missing or invalid.
std::optional<std::string> fromHex(const std::string& digits);
}  // namespace Standalone
