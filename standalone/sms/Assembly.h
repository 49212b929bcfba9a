#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "standalone/sms/Modem.h"
#include "standalone/sms/Pdu.h"

namespace Standalone {
/// A short message in the memory of a modem.
struct Stored {
  std::string place;  ///< identifies its place in the memory; without blanks and commas
  bool read = false;
  std::string pdu;  ///< hexadecimal digits
};

/// Joins the parts in `stored` to messages, in the order of their first parts. Parts belong together if they
/// have the same sender, reference and count. A repeated part belongs to its message, too.
///
/// Omits a message with missing parts until it is 72 hours old at `now` (seconds since 1970). Then its text
/// is one line, which names the parts and contains their octets in hexadecimal digits. 8-bit data, an MMS
/// notification, and a PDU that is not a received message become such a line, too.
///
/// The id of a message contains the places of its parts and a checksum of each PDU.
std::vector<Message> assemble(const std::vector<Stored>& stored, std::int64_t now);

/// Returns the line that the tool lists for 8-bit data.
std::string dataLine(const std::string& octets);

/// Splits the id of a message into the ids of its parts, such as "SM/3,1234567".
std::vector<std::string> partsOf(const std::string& id);

/// Returns the id of a part: its place, a comma, and the checksum of its PDU.
std::string partId(const Stored& stored);
}  // namespace Standalone
