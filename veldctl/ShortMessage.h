#pragma once

#include <string>

/// The numbers and texts that a short message can have (3GPP TS 23.038 and 23.040).
namespace ShortMessage {

/// True for 1 to 20 digits with an optional leading "+". The number becomes part of a shell command, so
/// veldctl applies this rule to every message that it queues or shows.
bool isNumber(const std::string& number);
constexpr char numberRule[] = "a number is 1 to 20 digits with an optional leading +";

/// The messages that a text needs.
struct Shape {
  unsigned messages = 0;  ///< their number; 0 if the text cannot be encoded
  std::string outside;    ///< its characters outside the GSM alphabet, each once; if any, it is sent as UCS-2
  std::string fault;      ///< why the text cannot be sent; empty if it can
};
Shape shapeOf(const std::string& text);

/// The size of the longest text in UTF-8: 255 parts of 153 characters of two bytes each.
constexpr std::size_t mostBytes = 255 * 153 * 2;

}  // namespace ShortMessage
