#pragma once

#include <string>

/// What can be sent as a short message (3GPP TS 23.038 and 23.040).
namespace ShortMessage {

/// Whether `number` is 1 to 20 digits with an optional leading "+". It becomes part of a shell command, so
/// this one rule holds for every message that veldctl queues or shows.
bool isNumber(const std::string& number);
constexpr char numberRule[] = "a number is 1 to 20 digits with an optional leading +";

/// How a text travels.
struct Shape {
  unsigned messages = 0;  ///< how many it takes; 0 when it cannot be sent
  std::string outside;    ///< its characters that the GSM alphabet lacks, each once: all of it goes as UCS-2
  std::string fault;      ///< why it cannot be sent; empty when it can
};
Shape shapeOf(const std::string& text);

/// No longer text can be sent: 255 parts of 153 characters of two bytes each.
constexpr std::size_t mostBytes = 255 * 153 * 2;

}  // namespace ShortMessage
