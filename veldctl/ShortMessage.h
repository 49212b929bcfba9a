#pragma once

#include <string>

/// The numbers and texts that a short message can have (3GPP TS 23.038 and 23.040).
namespace ShortMessage {
/// Returns true for 1 to 20 digits with an optional leading "+". The number becomes part of a shell command,
/// so veldctl applies this rule to every message that it queues or shows.
bool isNumber(const std::string& number);
constexpr char numberRule[] = "a number is 1 to 20 digits with an optional leading +";

/// How a text is sent: in the GSM alphabet or, if `outside` is not empty, in UCS-2.
struct Encoding {
  unsigned messages = 0;  ///< how many messages the text needs; 0 if it cannot be encoded
  std::string outside;    ///< the characters that the GSM alphabet lacks, each of them once
  std::string fault;      ///< why the text cannot be sent; empty if it can
};
Encoding encodingOf(const std::string& text);

/// The size of the longest text in UTF-8: 255 parts of 153 characters, each character of two bytes.
constexpr std::size_t mostBytes = 255 * 153 * 2;
}  // namespace ShortMessage
