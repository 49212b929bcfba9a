#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "standalone/sms/Modem.h"
#include "standalone/sms/Pdu.h"

namespace Standalone {

/// A short message in the memory of a modem.
struct Stored {
  std::string place;  ///< its place in the memory; without blanks and commas
  bool read = false;
  std::string pdu;  ///< hexadecimal digits
};

/// Joins `stored` to messages, in the order of their first parts. Parts belong together when sender,
/// reference and count are equal; a repeated part is deleted with its message.
///
/// Omits a concatenated message with missing parts until it is older than 72 hours at `now` (seconds since
/// 1970). Its text is then one line that says so, as for 8-bit data, MMS notifications, and a PDU that is
/// not a received message, each with its octets in hexadecimal digits.
///
/// The id of a message contains the places of its parts, and a checksum of each PDU.
std::vector<Message> assemble(const std::vector<Stored>& stored, std::int64_t now);

/// The line that is listed for 8-bit data.
std::string dataLine(const std::string& octets);

/// The places and check sums of an id, as "place,sum" pairs.
std::vector<std::string> partsOf(const std::string& id);

/// The part of an id that stands for `stored`.
std::string partId(const Stored& stored);

}  // namespace Standalone
