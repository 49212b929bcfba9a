#pragma once

#include <json/json.h>

#include <string>
#include <vector>

/// Decodes the user data of a message, as the tool prints it, into UTF-8 text.
///
/// The tool prints printable characters as themselves and other octets as C escapes: "\x1b", "\n", "\"". Only
/// the GSM 7-bit default alphabet and its extension table are decoded, and only from hex escapes; UCS-2 and
/// 8-bit data are not. Bytes of 0x80 and above pass through. Nothing here fails: an escape that cannot be
/// decoded stays in the text.

/// 0 to 15 for a hexadecimal digit of either case, -1 for any other character.
int hexDigitValue(char c);

/// Reads the octet at `cursor`, plain or escaped, and moves the cursor past it: 0 to 255, -1 for an escape
/// that encodes no octet, 0 at or past the end of the text.
int readEscapedByte(std::size_t& cursor, const std::string& text);

/// Removes the user data header of a part of a concatenated message (3GPP TS 23.040, information elements
/// 0x00 and 0x08: an 8-bit or a 16-bit reference) from the front of `text`, and sets "part-id", "part-index"
/// (from 0) and "part-count" in `record`. Any other header, or none, leaves both as they are. A header whose
/// part number is 0 or above its count is removed, but sets nothing.
void parseUserDataHeader(Json::Value& record, std::string& text);

/// Resolves the escapes of the double quote, the backslash, "n", "r" and "t". All others stay, notably "\x".
void unescapeText(std::string& text);

/// Replaces each hex escape by the text of its octet in the GSM 7-bit default alphabet (see GsmAlphabet.h).
/// Replaces the escape code 0x1B and the character after it by a character of the extension table, or by
/// nothing if that character is missing or not in the alphabet. Decoding ends at the first escape whose first
/// digit is not 0 to 9 or "a"; it stays, as do all later ones. The text never grows.
void decodeGsmEscapes(std::vector<char>& bytes);

/// Applies the last three functions in this order: writes the header into `record` and returns the text.
std::string decodeUserData(std::string text, Json::Value& record);
