#pragma once

#include <json/json.h>

#include <string>
#include <vector>

/// These functions decode the tool's output for the user data of a message into UTF-8 text.
///
/// The tool prints printable characters unchanged and other octets as C escapes: "\x1b", "\n", "\"". The
/// functions decode hex escapes of the GSM 7-bit default alphabet and its extension table. They do not decode
/// UCS-2 or 8-bit data. Bytes of 0x80 and above stay unchanged. An escape that cannot be decoded stays in the
/// text; no function fails.

/// Returns the value of a hexadecimal digit of either case, 0 to 15; -1 for any other character.
int hexDigitValue(char c);

/// Reads the plain or escaped octet at `cursor` and moves the cursor to the next octet. Returns 0 to 255; -1
/// for an escape that encodes no octet; 0 at the end of the text and beyond.
int readEscapedByte(std::size_t& cursor, const std::string& text);

/// Removes the user data header of a concatenated message's part from the front of `text` (3GPP TS 23.040,
/// information element 0x00 or 0x08: an 8-bit or a 16-bit reference). Sets "part-id", "part-index" (from 0)
/// and "part-count" in `record`, unless the part number is 0 or above the count. Changes nothing if `text`
/// begins with another header or with no header.
void parseUserDataHeader(Json::Value& record, std::string& text);

/// Replaces the escapes \", \\, \n, \r and \t by their characters. All other escapes stay, including \x.
void unescapeText(std::string& text);

/// Replaces each hex escape by its character in the alphabets of GsmAlphabet.h. Replaces the escape code 0x1B
/// and the next character by a character of the extension table. The replacement is empty if the next
/// character is missing or not in the default alphabet. Decoding ends at the first hex escape whose first
/// digit is neither 0 to 9 nor "a"; this escape and all later escapes stay. The text never grows.
void decodeGsmEscapes(std::vector<char>& bytes);

/// Calls the three functions above in their order: sets the keys in `record` and returns the decoded text.
std::string decodeUserData(std::string text, Json::Value& record);
