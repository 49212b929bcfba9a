#pragma once

#include <array>
#include <string_view>

/// The two GSM 7-bit alphabets of 3GPP TS 23.038. The entry of a code is its character as UTF-8 text. The
/// decoder reads an octet of 0x80 or above as a code of the second alphabet.
extern const std::array<std::array<std::string_view, 128>, 2> gsmAlphabets;

/// The default alphabet (section 6.2.1). The escape code 0x1B maps to itself.
inline constexpr const auto& gsmDefaultAlphabet = gsmAlphabets[0];

/// The extension table (section 6.2.1.1) holds the character for the code after the escape code, and "?" for
/// an undefined code. The gateway's messages use other codes than the published table for two characters: the
/// form feed is 0x0F instead of 0x0A, and "^" is 0x13 instead of 0x14.
inline constexpr const auto& gsmExtensionAlphabet = gsmAlphabets[1];
