#pragma once

#include <array>
#include <string_view>

/// The GSM 7-bit alphabets of 3GPP TS 23.038, each code as UTF-8 text. They form one table: an octet of 0x80
/// or above selects the second half.
extern const std::array<std::array<std::string_view, 128>, 2> gsmAlphabets;

/// The default alphabet (6.2.1). The escape code 0x1B maps to itself.
inline constexpr const auto& gsmDefaultAlphabet = gsmAlphabets[0];

/// The extension table (6.2.1.1), for the code after the escape code; "?" for undefined codes. Two entries
/// differ from the published table, as the gateway's messages do: the form feed is 0x0F instead of 0x0A, "^"
/// is 0x13 instead of 0x14.
inline constexpr const auto& gsmExtensionAlphabet = gsmAlphabets[1];
