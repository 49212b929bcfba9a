#include <cstring>

#include "daemon/SmsTimings.h"
#include "tests/Testing.h"

using namespace std::string_literals;

namespace {
constexpr char timingsFile[] = "/var/run/config/backofftimers_config";
const std::string many = "1,2,3," + std::string(118, ',');  // three characters below the limit
}  // namespace

// Expected: no seconds if reading fails.
const Row<std::string, std::vector<std::uint32_t>> timingsRows[] = {
    {"List", "timings-sms=[30,60,300]\n", {30, 60, 300}},
    {"EmptyPieces", "timings-sms=[[,30,,60],]\n", {30, 60}},
    {"Blanks", "timings-sms=[ 30, 60 ]\n", {30, 60}},
    {"NoFinalNewline", "timings-sms=[30]", {30}},
    {"NoFinalNewlineCutsADigit", "timings-sms=30", {3}},
    {"OtherKeys", "a=1\nno equals\n\ntimings-sms=10\ntimings-data=20\n", {10}},
    {"LastLineWins", "timings-sms=10\ntimings-sms=20\n", {20}},
    {"BlankInTheKey", "timings-sms =10\n", {}},
    {"FirstIsNotANumber", "timings-sms=[a,60]\n", {0, 60}},
    {"NotANumberRepeatsTheLast", "timings-sms=[30,a,60x]\n", {30, 30, 60}},
    {"Negative", "timings-sms=[-1]\n", {4294967295u}},
    {"TooLarge", "timings-sms=[99999999999,-99999999999]\n", {2147483647u, 2147483648u}},
    {"OtherSeparator", "timings-sms=30;40\n", {30}},
    {"BlankInside", "timings-sms=30 40\n", {30}},
    {"DecimalOnly", "timings-sms=[010,0x10]\n", {10, 0}},
    {"KeyInCapitals", "TIMINGS-SMS=10\n", {}},
    {"KeyAndMore", "timings-sms2=10\n", {}},
    {"SecondEqualsSign", "timings-sms=30=40\n", {30}},
    {"AllThatFits", "timings-sms=" + many + "360\n", {1, 2, 3, 360}},
    {"CutInsideANumber", "timings-sms=" + many + "3600\n", {1, 2, 3}},
    {"CutAfterANumber", "timings-sms=" + many + "360,5\n", {1, 2, 3, 360}},
    {"LongLineCountsAsSeveral", "x" + std::string(1022, '=') + "timings-sms=30\n", {30}},
    {"NulAtTheStart", "\0timings-sms=20\ntimings-sms=30\n"s, {30}},
    {"NulInside", "timings-sms=30\0,40\n"s, {3}},
    {"Empty", "", {}},
    {"EmptyValue", "timings-sms=\n", {}},
    {"EmptyList", "timings-sms=[]\n", {}},
};
TEST_ROWS(Timings, AreRead, timingsRows) {
  const LogCapture quiet;
  writeFile(timingsFile, GetParam().given);
  smsTimings.clear();
  EXPECT_EQ(readSmsTimings(), GetParam().expected.empty());
  EXPECT_EQ(smsTimings, GetParam().expected);
}

TEST(Timings, WarnOnceIfAValueIsCut) {
  const std::string line = "timings-sms=" + many + "3600\n";
  writeFile(timingsFile, line + line);
  LogCapture log;
  readSmsTimings();
  writeFile(timingsFile, line + "timings-sms=" + many + "360\n");
  readSmsTimings();
  EXPECT_EQ(log.text(), "[WARNING] VELD: The value of timings-sms is too long. It is cut to " +
                            many.substr(0, many.size() - 1) + "\n");
}

TEST(ReadConfigValue, ChecksItsArguments) {
  const TemporaryFolder folder{{"file", "key=value\n"}};
  const std::string path = folder.path + "/file";
  char value[configValueSize] = "";
  EXPECT_EQ(readConfigValue(path.c_str(), 1, "other", value), 1);
  std::strcpy(value, "kept");
  EXPECT_EQ(readConfigValue(nullptr, 1, "key", value), -1);
  EXPECT_EQ(readConfigValue(path.c_str(), 1, nullptr, value), -1);
  EXPECT_EQ(readConfigValue(path.c_str(), 1, "key", nullptr), -1);
  EXPECT_EQ(readConfigValue(path.c_str(), -1, "key", value), -1);
  EXPECT_EQ(readConfigValue((path + "x").c_str(), 1, "key", value), -1);
  EXPECT_EQ(readConfigValue(path.c_str(), 1, "other", value), 1);
  EXPECT_STREQ(value, "kept");
  EXPECT_EQ(readConfigValue(path.c_str(), 0, "key", value), 1);
  EXPECT_STREQ(value, "value");
}
