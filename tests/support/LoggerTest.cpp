#include <syslog.h>

#include "support/Logger.h"
#include "tests/DatagramSocket.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"

using Orvel::Logger;

namespace {
/// The socket to which syslog() writes. Its destruction makes the logger write to standard error again.
class SyslogSocket : public DatagramSocket {
 public:
  SyslogSocket() : DatagramSocket(_PATH_LOG) {}
  ~SyslogSocket() { Logger::setup(Logger::PrintMode::StandardError); }
};
}  // namespace

TEST(Logger, SetUpFailsWithoutSyslogOrIdent) {
  EXPECT_FALSE(Logger::setup(Logger::PrintMode::Syslog, "VELD", 0, 0));
  EXPECT_FALSE(Logger::setup(Logger::PrintMode::Syslog));
  const SyslogSocket syslog;
  EXPECT_FALSE(Logger::setup(Logger::PrintMode::Syslog, "", 0, 0));
}

TEST(Logger, CopiesTheIdent) {
  SyslogSocket syslog;
  {
    std::string ident = "VELD";
    ASSERT_TRUE(Logger::setup(Logger::PrintMode::Syslog, ident, 0, 0));
    ident = "gone";
  }
  ORVEL_LOG(ERROR, "no %s", "answer");
  const std::string line = syslog.receive();
  EXPECT_NE(line.find(" VELD: [ERROR] no answer"), std::string::npos) << line;
}

TEST(Logger, GivesEachLevelItsPriority) {
  SyslogSocket syslog;
  ASSERT_TRUE(Logger::setup(Logger::PrintMode::Syslog, "VELD", 0, LOG_USER));
  const int priorities[] = {LOG_DEBUG, LOG_DEBUG, LOG_INFO, LOG_WARNING, LOG_ERR, LOG_CRIT};
  int level = Logger::PrintLevel::TRACE_LEVEL;
  for (const int priority : priorities) {
    Logger::printfGeneric(level++, "LABEL", "text");
    EXPECT_EQ(syslog.receive().substr(0, 4), "<" + std::to_string(LOG_USER | priority) + ">");
  }
}

TEST(Logger, PrintsInfoAndAbove) {
  LogCapture log;
  int evaluated = 0;
  ORVEL_LOG(TRACE, "%d", ++evaluated);
  ORVEL_LOG(DEBUG, "%d", ++evaluated);
  ORVEL_LOG(INFO, "%d", ++evaluated);
  ORVEL_LOG(FATAL, "%d", ++evaluated);
  EXPECT_EQ(log.text(), "[INFO] 1\n[FATAL] 2\n");
}

const Row<std::string, std::string> textRows[] = {
    {"ForgedLine", "a\n[FATAL] b\x1B\x7F\t", "a#012[FATAL] b#033#177#011"},
    {"Utf8OfAnyLength", "~ \xC2\xA0é€\xED\x9F\xBF\uE000😀\xF4\x8F\xBF\xBF",
     "~ \xC2\xA0é€\xED\x9F\xBF\uE000😀\xF4\x8F\xBF\xBF"},
    {"ControlCharactersOfTwoBytes", "\xC2\x80\xC2\x9F", "#302#200#302#237"},
    {"Latin1", "\xE4\xFCx", "#344#374x"},
    {"ContinuationByteWithoutAFirstByte", "\xBF\xA0é", "#277#240é"},
    {"Truncated", "\xE2\x82x\xF0\x9F\x98", "#342#202x#360#237#230"},
    {"Overlong", "\xC1\xBF\xE0\x9F\xBF\xF0\x8F\xBF\xBF", "#301#277#340#237#277#360#217#277#277"},
    {"Surrogate", "\xED\xA0\x80\xED\xBF\xBF", "#355#240#200#355#277#277"},
    {"BeyondTheLastCodePoint", "\xF4\x90\x80\x80\xF8\x90\x80\x80", "#364#220#200#200#370#220#200#200"},
    {"Long", std::string(100000, 'x'), std::string(100000, 'x')},
};
TEST_ROWS(Text, IsEscaped, textRows) {
  LogCapture log;
  ORVEL_LOG(INFO, "%s", GetParam().given.c_str());
  EXPECT_EQ(log.text(), "[INFO] " + GetParam().expected + "\n");
}
