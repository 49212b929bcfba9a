#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Standalone {

/// One received short message as the network delivers it (SMS-DELIVER of 3GPP TS 23.040).
struct Part {
  enum class Alphabet { Gsm, Data, Ucs2 };

  std::string centre;     ///< number of the service centre; empty if the modem leaves it out
  std::string sender;     ///< a number, or a name of letters
  std::int64_t sent = 0;  ///< when the service centre accepted it, in seconds since 1970
  Alphabet alphabet = Alphabet::Gsm;
  unsigned reference = 0;  ///< of the concatenation header
  bool wide = false;       ///< whether the reference has 16 bits
  unsigned count = 1;      ///< parts of the whole message
  unsigned number = 1;     ///< of this part, from 1
  std::string content;     ///< after the header: GSM codes, one per byte, or octets
};

/// Reads a PDU in hexadecimal digits, with the service centre in front, as AT+CMGL prints it. Nothing when it
/// is no whole SMS-DELIVER.
std::optional<Part> readDeliver(const std::string& hex);

/// The text of `content` in `alphabet`; hexadecimal digits for Data. The content of several parts is one
/// text: some networks cut it inside a character.
std::string textOf(Part::Alphabet alphabet, const std::string& content);

/// An SMS-SUBMIT for AT+CMGS.
struct Submit {
  std::size_t length;  ///< octets without the service centre, as AT+CMGS requires
  std::string hex;     ///< with an empty service centre in front
};

/// The parts that carry `text`, valid UTF-8, to `number`: in the GSM alphabet where it fits, else in UCS-2.
/// Parts of one message share the low 8 bits of `reference`. Empty when there would be more than 255.
std::vector<Submit> makeSubmits(const std::string& number, const std::string& text, unsigned reference);

/// Whether a message can be sent to `number`: at most 20 digits, "*" and "#", after an optional "+".
bool isNumber(const std::string& number);

}  // namespace Standalone
