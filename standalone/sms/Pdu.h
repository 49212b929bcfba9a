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
  std::int64_t sent = 0;  ///< when the service centre accepted it, in seconds since 1970
  Alphabet alphabet = Alphabet::Gsm;
  unsigned reference = 0;  ///< that all parts of the message share
  bool wide = false;       ///< the reference has 16 bits, not 8
  unsigned count = 1;      ///< the number of parts of the whole message
  unsigned number = 1;     ///< the number of this part, from 1
  std::string content;     ///< without the header: GSM codes, one per byte, or octets
};

/// Reads a PDU in the hexadecimal digits of AT+CMGL. Nullopt if it is not a whole SMS-DELIVER.
std::optional<Part> readDeliver(const std::string& hex);

/// Converts `content` from `alphabet` to UTF-8, or to hexadecimal digits for Data. Join the content of all
/// parts first: some networks cut it inside a character.
std::string textOf(Part::Alphabet alphabet, const std::string& content);

/// An SMS-SUBMIT for AT+CMGS.
struct Submit {
  std::size_t length;  ///< in octets, without the service centre, as AT+CMGS requires it
  std::string hex;     ///< begins with an empty service centre
};

/// Returns the parts that carry `text`, which is valid UTF-8, to `number`: in the GSM alphabet if it has all
/// the characters, otherwise in UCS-2. The parts share the low 8 bits of `reference`. Returns none if the
/// text needs more than 255 parts.
std::vector<Submit> makeSubmits(const std::string& number, const std::string& text, unsigned reference);

/// True if `number` consists of an optional "+" and at most 20 digits, "*" and "#".
bool isNumber(const std::string& number);

}  // namespace Standalone
