#pragma once

#include <optional>
#include <string>

namespace Standalone {

/// Conversions between UTF-8 and what the network carries (3GPP TS 23.038).

/// The UTF-8 text of GSM 7-bit codes, one to a byte, by the default alphabet and its extension table. An
/// escape before a code that the extension table lacks gives the character of the default alphabet.
std::string fromGsm(const std::string& codes);

/// The UTF-8 text of UTF-16 in big-endian order. U+FFFD stands for half a surrogate pair, for a single last
/// octet and for U+0000, which no line of a listing can carry.
std::string fromUtf16(const std::string& octets);

/// The GSM 7-bit codes of `text`, one to a byte. Nothing when a character is in neither table.
std::optional<std::string> toGsm(const std::string& text);

/// `text` as UTF-16 in big-endian order. Nothing when `text` is no valid UTF-8.
std::optional<std::string> toUtf16(const std::string& text);

/// Whether `text` is valid UTF-8.
bool isUtf8(const std::string& text);

/// The octets in upper-case hexadecimal digits.
std::string toHex(const std::string& octets);

/// The octets of hexadecimal digits of either case. Nothing when a digit is missing or wrong.
std::optional<std::string> fromHex(const std::string& digits);

}  // namespace Standalone
