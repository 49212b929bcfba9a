#pragma once

#include <string>

/// What can be sent as a short message (3GPP TS 23.038 and 23.040).
namespace ShortMessage {

/// Whether `number` is digits, 20 at most, behind one "+" at most: it becomes part of a shell command.
bool isNumber(const std::string& number);

/// How a text travels.
struct Shape {
  unsigned messages = 0;  ///< how many it takes; 0 when it is empty, no UTF-8, or holds what is no character
  std::string outside;    ///< its characters that the GSM alphabet lacks, each once: all of it goes as UCS-2
};
Shape shapeOf(const std::string& text);
constexpr unsigned mostMessages = 255;

}  // namespace ShortMessage
