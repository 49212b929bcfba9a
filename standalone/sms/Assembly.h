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

/// The messages that `stored` make, in the order in which the first part of each lies there. Parts belong
/// together when sender, reference and count are the same; a part that came twice is deleted with the
/// message.
///
/// A long message is left out while parts are missing, until it is older than 72 hours at `now` (seconds
/// since 1970). It is then one line that says so, as are 8-bit data, MMS notifications, and a PDU that is no
/// received message, each with its octets in hexadecimal digits.
///
/// The id of a message names the places of its parts, and a check sum of each PDU.
std::vector<Message> assemble(const std::vector<Stored>& stored, std::int64_t now);

/// The line that is listed for 8-bit data.
std::string dataLine(const std::string& octets);

/// The places and check sums of an id, as "place,sum" pairs.
std::vector<std::string> partsOf(const std::string& id);

/// The part of an id that stands for `stored`.
std::string partId(const Stored& stored);

}  // namespace Standalone
