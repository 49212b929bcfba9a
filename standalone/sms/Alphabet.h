#pragma once

#include <optional>
#include <string>

namespace Standalone {

/// Conversions between UTF-8 and what the network carries (3GPP TS 23.038).

/// Converts GSM 7-bit codes, one per byte, to UTF-8 by the default alphabet and its extension table. An
/// escape before a code that the extension table lacks is ignored.
std::string fromGsm(const std::string& codes);

/// Converts big-endian UTF-16 to UTF-8. U+FFFD replaces half a surrogate pair, a single last octet, and
/// U+0000, which a line of a listing cannot contain.
std::string fromUtf16(const std::string& octets);

/// Converts `text` to GSM 7-bit codes, one per byte. Nullopt if a character is in neither table.
std::optional<std::string> toGsm(const std::string& text);

/// Converts `text` to big-endian UTF-16. Nullopt if `text` is not valid UTF-8.
std::optional<std::string> toUtf16(const std::string& text);

bool isUtf8(const std::string& text);

/// Returns the octets as upper-case hexadecimal digits.
std::string toHex(const std::string& octets);

/// Converts hexadecimal digits of either case to octets. Nullopt if a digit is missing or invalid.
std::optional<std::string> fromHex(const std::string& digits);

}  // namespace Standalone
