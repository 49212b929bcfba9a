#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Standalone {
/// One received short message as the network delivers it (SMS-DELIVER of 3GPP TS 23.040).
struct Part {
  enum class Alphabet { Gsm, Data, Ucs2 };

  std::string centre;     ///< the number of the service centre; empty if the modem omits it
  std::string sender;     ///< a number, or a name of letters
  std::int64_t sent = 0;  ///< when the service centre accepted the message, in seconds since 1970
  Alphabet alphabet = Alphabet::Gsm;
  unsigned reference = 0;  ///< the same in all parts of a message
  bool wide = false;       ///< true if the reference has 16 bits, false if it has 8 bits
  unsigned count = 1;      ///< the number of parts of the whole message
  unsigned number = 1;     ///< the number of this part, from 1
  std::string content;     ///< without the header: GSM codes, one per byte, or octets
};

/// Reads a PDU in hexadecimal digits. Returns nullopt if it is not a whole SMS-DELIVER.
std::optional<Part> readDeliver(const std::string& hex);

/// Converts `content` from `alphabet` to UTF-8, or to hexadecimal digits if the alphabet is Data. Needs the
/// content of all parts, because some networks divide a character between two parts.
std::string textOf(Part::Alphabet alphabet, const std::string& content);

/// An SMS-SUBMIT for AT+CMGS.
struct Submit {
  std::size_t length;  ///< in octets, without the service centre, as AT+CMGS requires it
  std::string hex;     ///< begins with an empty service centre
};

/// Returns the parts that carry `text`, which is valid UTF-8, to `number`. Uses UCS-2 only if the GSM
/// alphabet lacks a character. The parts share the low 8 bits of `reference`. Returns no parts if the text
/// needs more than 255.
std::vector<Submit> makeSubmits(const std::string& number, const std::string& text, unsigned reference);

/// Returns true if `number` consists of an optional "+" and of 1 to 20 digits, "*" and "#".
bool isNumber(const std::string& number);
}  // namespace Standalone
