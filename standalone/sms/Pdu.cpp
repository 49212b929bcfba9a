#include "standalone/sms/Pdu.h"

#include <ctime>
#include <stdexcept>
#include <string_view>

#include "standalone/sms/Alphabet.h"

namespace Standalone {
namespace {
constexpr char semiOctets[] = "0123456789*#abc";
// Types of an address.
constexpr unsigned international = 1;
constexpr unsigned alphanumeric = 5;

// Reads a PDU from its beginning. Throws std::out_of_range if fewer octets are left than a call needs.
class Octets {
 public:
  explicit Octets(std::string_view octets) : rest_(octets) {}
  unsigned next() { return static_cast<unsigned char>(take(1)[0]); }
  std::string_view take(std::size_t count) {
    if (count > rest_.size()) throw std::out_of_range("PDU");
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }
  bool empty() const { return rest_.empty(); }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// Unpacks `count` septets after `skip` bits. Returns one septet per byte.
std::string unpack(std::string_view octets, std::size_t skip, std::size_t count) {
  std::string codes;
  for (std::size_t bit = skip; codes.size() < count; bit += 7) {
    if ((bit + 6) / 8 >= octets.size()) throw std::out_of_range("septets");
    unsigned pair = static_cast<unsigned char>(octets[bit / 8]);
    if (bit / 8 + 1 < octets.size()) pair |= static_cast<unsigned char>(octets[bit / 8 + 1]) * 256U;
    codes += static_cast<char>((pair >> (bit % 8)) & 0x7FU);
  }
  return codes;
}

// Packs the septets of `codes`. Puts `skip` fill bits before the first septet.
std::string pack(const std::string& codes, std::size_t skip) {
  std::string octets((skip + codes.size() * 7 + 7) / 8, '\0');
  std::size_t bit = skip;
  for (const char code : codes) {
    const unsigned shifted = static_cast<unsigned>(code) << (bit % 8);
    octets[bit / 8] = static_cast<char>(static_cast<unsigned char>(octets[bit / 8]) | (shifted & 0xFFU));
    if (shifted > 0xFF) octets[bit / 8 + 1] = static_cast<char>(shifted >> 8U);
    bit += 7;
  }
  return octets;
}

std::string digitsOf(std::string_view octets) {
  std::string digits;
  for (const char c : octets)
    for (const unsigned nibble : {static_cast<unsigned>(c) & 15U, (static_cast<unsigned>(c) >> 4U) & 15U})
      if (nibble < 15) digits += semiOctets[nibble];
  return digits;
}

std::string addressOf(unsigned type, std::string_view octets, std::size_t nibbles) {
  const unsigned kind = (type >> 4U) & 7U;
  if (kind == alphanumeric) return fromGsm(unpack(octets, 0, nibbles * 4 / 7));
  return (kind == international ? "+" : "") + digitsOf(octets);
}

std::string centreOf(Octets& pdu) {
  const std::size_t length = pdu.next();
  if (length == 0) return "";
  const unsigned type = pdu.next();
  return addressOf(type, pdu.take(length - 1), 0);
}

std::string senderOf(Octets& pdu) {
  const std::size_t nibbles = pdu.next();
  const unsigned type = pdu.next();
  return addressOf(type, pdu.take((nibbles + 1) / 2), nibbles);
}

// Reads seven octets of two digits each: year to second, and the time zone in quarters of an hour.
std::int64_t timeOf(std::string_view stamp) {
  const auto number = [stamp](std::size_t at) {
    const auto octet = static_cast<unsigned char>(stamp[at]);
    return static_cast<int>((octet & 15U) * 10U + (octet >> 4U));
  };
  std::tm parts{};
  parts.tm_year = 100 + number(0);
  parts.tm_mon = number(1) - 1;
  parts.tm_mday = number(2);
  parts.tm_hour = number(3);
  parts.tm_min = number(4);
  parts.tm_sec = number(5);
  const auto zone = static_cast<unsigned char>(stamp[6]);
  int quarters = static_cast<int>((zone & 7U) * 10U + (zone >> 4U));
  if ((zone & 8U) != 0) quarters = -quarters;
  return timegm(&parts) - quarters * 15 * 60;
}

Part::Alphabet alphabetOf(unsigned coding) {
  const unsigned group = coding >> 4U;
  const unsigned alphabet = (coding >> 2U) & 3U;
  if (group == 14 || (group < 8 && alphabet == 2)) return Part::Alphabet::Ucs2;
  const bool compressed = group < 8 && (coding & 0x20U) != 0;
  const bool data = (group < 8 && alphabet == 1) || (group == 15 && (coding & 4U) != 0);
  return compressed || data ? Part::Alphabet::Data : Part::Alphabet::Gsm;
}

// Reads the concatenation element of a user data header. Ignores other elements.
void readHeader(Octets header, Part& part) {
  while (!header.empty()) {
    const unsigned element = header.next();
    Octets value(header.take(header.next()));
    if (element == 0x00 || element == 0x08) {
      part.wide = element == 0x08;
      part.reference = value.next();
      if (part.wide) part.reference = part.reference * 256 + value.next();
      part.count = value.next();
      part.number = value.next();
    }
  }
  if (part.number >= 1 && part.number <= part.count) return;
  part.count = 1;
  part.number = 1;
}

// Reads the header, if there is one, and the content. `length` is that of both, in septets or octets.
void readUserData(std::string_view userData, bool hasHeader, std::size_t length, Part& part) {
  std::size_t headerSize = 0;
  if (hasHeader) {
    Octets header(userData);
    headerSize = header.next() + 1;
    readHeader(Octets(header.take(headerSize - 1)), part);
  }
  const std::size_t headerSeptets = (headerSize * 8 + 6) / 7;
  if (part.alphabet != Part::Alphabet::Gsm)
    part.content = userData.substr(headerSize);
  else if (headerSeptets > length)
    throw std::out_of_range("header");
  else
    part.content = unpack(userData, headerSeptets * 7, length - headerSeptets);
}

Part readPart(Octets pdu) {
  Part part;
  part.centre = centreOf(pdu);
  const unsigned type = pdu.next();
  if ((type & 3U) != 0) throw std::out_of_range("not an SMS-DELIVER");
  part.sender = senderOf(pdu);
  pdu.next();  // the protocol identifier
  part.alphabet = alphabetOf(pdu.next());
  part.sent = timeOf(pdu.take(7));
  const std::size_t length = pdu.next();
  const bool isGsm = part.alphabet == Part::Alphabet::Gsm;
  readUserData(pdu.take(isGsm ? (length * 7 + 7) / 8 : length), (type & 0x40U) != 0, length, part);
  return part;
}

// Splits `content` into pieces of at most `room` bytes. `overhang(end)` returns how many bytes before the
// position `end` belong to the next piece, because a character continues after `end`.
template <typename Overhang>
std::vector<std::string> cut(const std::string& content, std::size_t room, Overhang overhang) {
  std::vector<std::string> pieces;
  for (std::size_t at = 0; at < content.size() || pieces.empty();) {
    std::size_t length = std::min(room, content.size() - at);
    if (at + length < content.size()) length -= overhang(at + length);
    pieces.push_back(content.substr(at, length));
    at += length;
  }
  return pieces;
}

std::vector<std::string> cutGsm(const std::string& codes) {
  // An escape code at `end - 1` belongs to the code at `end`: toGsm() never returns two escapes in a row.
  return cut(codes, codes.size() <= 160 ? 160 : 153,
             [&codes](std::size_t end) { return codes[end - 1] == 0x1B ? std::size_t{1} : 0; });
}

std::vector<std::string> cutUtf16(const std::string& octets) {
  return cut(octets, octets.size() <= 140 ? 140 : 134, [&octets](std::size_t end) {
    return (static_cast<unsigned char>(octets[end - 2]) & 0xFCU) == 0xD8 ? std::size_t{2} : 0;
  });
}

std::string destination(const std::string& number) {
  const bool plus = number[0] == '+';
  const std::string digits = number.substr(plus ? 1 : 0);
  std::string octets{static_cast<char>(digits.size()), static_cast<char>(plus ? 0x91 : 0x81)};
  const std::string_view known = semiOctets;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    const std::size_t high = at + 1 < digits.size() ? known.find(digits[at + 1]) : 15;
    octets += static_cast<char>(high * 16 + known.find(digits[at]));
  }
  return octets;
}

// Returns the user data header of a part, with a reference of 8 bits.
std::string headerOf(unsigned reference, std::size_t count, std::size_t number) {
  return {5, 0, 3, static_cast<char>(reference & 0xFFU), static_cast<char>(count), static_cast<char>(number)};
}

Submit makeSubmit(const std::string& address, const std::string& header, const std::string& content,
                  bool isGsm) {
  const std::size_t headerSeptets = (header.size() * 8 + 6) / 7;
  const std::size_t length = (isGsm ? headerSeptets : header.size()) + content.size();
  std::string octets{static_cast<char>(header.empty() ? 0x01 : 0x41), 0};
  octets += address;
  octets += {0, static_cast<char>(isGsm ? 0 : 8), static_cast<char>(length)};
  octets += header;
  octets += isGsm ? pack(content, headerSeptets * 7 - header.size() * 8) : content;
  return {octets.size(), "00" + toHex(octets)};
}
}  // namespace

std::optional<Part> readDeliver(const std::string& hex) {
  const std::optional<std::string> octets = fromHex(hex);
  if (!octets) return std::nullopt;
  try {
    return readPart(Octets(*octets));
  } catch (const std::out_of_range&) {
    return std::nullopt;
  }
}

std::string textOf(Part::Alphabet alphabet, const std::string& content) {
  switch (alphabet) {
    case Part::Alphabet::Gsm:
      return fromGsm(content);
    case Part::Alphabet::Ucs2:
      return fromUtf16(content);
    case Part::Alphabet::Data:
      break;
  }
  return toHex(content);
}

std::vector<Submit> makeSubmits(const std::string& number, const std::string& text, unsigned reference) {
  const std::optional<std::string> codes = toGsm(text);
  const std::vector<std::string> pieces = codes ? cutGsm(*codes) : cutUtf16(toUtf16(text).value_or(""));
  if (pieces.size() > 255) return {};
  std::vector<Submit> submits;
  for (const std::string& piece : pieces) {
    const std::string header =
        pieces.size() > 1 ? headerOf(reference, pieces.size(), submits.size() + 1) : "";
    submits.push_back(makeSubmit(destination(number), header, piece, codes.has_value()));
  }
  return submits;
}

bool isNumber(const std::string& number) {
  const std::string digits = number.substr(!number.empty() && number[0] == '+' ? 1 : 0);
  return !digits.empty() && digits.size() <= 20 &&
         digits.find_first_not_of("0123456789*#") == std::string::npos;
}
}  // namespace Standalone
