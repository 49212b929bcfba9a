#include "standalone/sms/Pdu.h"
#include "tests/Rows.h"

using Standalone::Part;
using Standalone::readDeliver;

namespace {
// Returns centre, sender, alphabet, reference, number/count, seconds and text in one line.
std::string described(const std::optional<Part>& part) {
  if (!part) return "none";
  constexpr const char* alphabets[] = {"gsm", "data", "ucs2"};
  return part->centre + " " + part->sender + " " + alphabets[static_cast<int>(part->alphabet)] + " " +
         std::to_string(part->reference) + " " + std::to_string(part->number) + "/" +
         std::to_string(part->count) + " " + std::to_string(part->sent) + " " +
         textOf(part->alphabet, part->content);
}

const Row<const char*, const char*> deliverRows[] = {
    {"SevenBit", "07917283010010F5040BC87238880900F10000993092516195800AE8329BFD4697D9EC37",
     "+27381000015 27838890001 gsm 0 1/1 4078473419 hellohello"},
    {"TimeZoneWest", "07917283010010F5040B917238880900F100009930925161958A0AE8329BFD4697D9EC37",
     "+27381000015 +27838890001 gsm 0 1/1 4078505819 hellohello"},
    {"NoCentre", "00040B917238880900F10000993092516195800AE8329BFD4697D9EC37",
     " +27838890001 gsm 0 1/1 4078473419 hellohello"},
    {"Name", "00040DD0CD3C481876AF0100009930925161958001B1", " My Bank gsm 0 1/1 4078473419 1"},
    {"Ucs2", "00040B917238880900F10008993092516195800604110068D83D",
     " +27838890001 ucs2 0 1/1 4078473419 Бh\uFFFD"},
    {"Data", "00040B917238880900F10004993092516195800301FF00", " +27838890001 data 0 1/1 4078473419 01FF00"},
    {"DataWithAMessageClass", "00040B917238880900F100F5993092516195800301FF00",
     " +27838890001 data 0 1/1 4078473419 01FF00"},
    {"PartWithFillBits", "00440B917238880900F1000099309251619580090500032A02019065",
     " +27838890001 gsm 42 1/2 4078473419 He"},
    {"WideReference", "00440B917238880900F100089930925161958009060804123403020411",
     " +27838890001 ucs2 4660 2/3 4078473419 Б"},
    {"NumberAboveCount", "00440B917238880900F1000899309251619580080500031202030411",
     " +27838890001 ucs2 18 1/1 4078473419 Б"},
    {"Report", "00060B917238880900F10000993092516195800131", "none"},
    {"CutShort", "00040B917238880900F10000993092516195800AE8329BFD4697D9EC", "none"},
    {"NoHex", "0004zz", "none"},
    {"Empty", "", "none"},
};
TEST_ROWS(Deliver, IsRead, deliverRows) {
  EXPECT_EQ(described(readDeliver(GetParam().given)), GetParam().expected);
}

// Returns the number of parts, and the length and the beginning of the first part's PDU.
std::string submitted(const std::string& number, const std::string& text) {
  const std::vector<Standalone::Submit> parts = Standalone::makeSubmits(number, text, 0x12A);
  if (parts.empty()) return "none";
  return std::to_string(parts.size()) + " " + std::to_string(parts[0].length) + " " +
         parts[0].hex.substr(0, 60);
}

struct SubmitRow {
  const char* name;
  const char* number;
  std::string text;
  const char* submitted;
};
const SubmitRow submitRows[] = {
    {"SevenBit", "+27838890001", "hellohello", "1 22 0001000B917238880900F100000AE8329BFD4697D9EC37"},
    {"National", "0171", "h", "1 10 0001000481101700000168"},
    {"Empty", "0171", "", "1 9 00010004811017000000"},
    {"Ucs2", "0171", "Б", "1 11 000100048110170008020411"},
    {"FullMessage", "0171", std::string(160, '1'),
     "1 149 000100048110170000A0B1582C168BC562B1582C168BC562B1582C168BC5"},
    {"OneMoreThanAMessage", "0171", std::string(161, '1'),
     "2 149 004100048110170000A00500032A020162B1582C168BC562B1582C168BC5"},
    {"EscapeIsNotCut", "0171", std::string(152, '1') + std::string(5, '{'), "2 149 0041000481101700009F"},
    {"PairIsNotCut", "0171", std::string(66, '1') + "🙂🙂🙂", "2 147 0041000481101700088A"},
    {"MostParts", "0171", std::string(255 * 153, '1'), "255 149 00410004811017"},
    {"TooManyParts", "0171", std::string(255 * 153 + 1, '1'), "none"},
};
TEST_ROWS(Submits, AreEncoded, submitRows) {
  const std::string made = submitted(GetParam().number, GetParam().text);
  EXPECT_EQ(made.substr(0, std::string(GetParam().submitted).size()), GetParam().submitted);
}

const Row<const char*, bool> numberRows[] = {
    {"Plain", "0171", true},
    {"International", "+49171", true},
    {"Service", "*100#", true},
    {"Letters", "0171a", false},
    {"Empty", "", false},
    {"PlusAlone", "+", false},
    {"PlusInside", "01+71", false},
    {"TwentyDigits", "+12345678901234567890", true},
    {"TooLong", "123456789012345678901", false},
};
TEST_ROWS(Number, IsRecognised, numberRows) {
  EXPECT_EQ(Standalone::isNumber(GetParam().given), GetParam().expected);
}
}  // namespace
