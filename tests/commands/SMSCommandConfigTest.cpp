#include <gmock/gmock.h>

#include "commands/SMSCMD.h"
#include "commands/SMSCommandConfig.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"

namespace {
constexpr char least[] =
    "{'enabled':true,'checkinEnabled':true,'rebootEnabled':false,'whitelist':{'enabled':true,'numbers':[1]},"
    "'password':{'enabled':true,'text':'secret'}}";
}

TEST(SMSCommandConfig, PermitsNothingBeforeItIsRead) {
  const SMSCommandConfig config;
  EXPECT_EQ(&config.enabled - &config.checkinEnabled, SMSCMD_COUNT - 1);
  for (int command = 0; command <= SMSCMD_COUNT; ++command) EXPECT_FALSE(config.isCommandEnabled(command));
  EXPECT_FALSE(config.enabled || config.whitelistEnabled || config.passwordEnabled);
}

struct RefusalRow {
  const char* name;
  const char* without;  ///< the member that is taken away, as KEY or KEY.KEY
  const char* log;
  bool flagsRead, whitelistRead;
};
constexpr char unparsable[] =
    "[ERROR] SMSCommandConfig::setConfig: Unable to parse SMS Commands configuration\n";
constexpr char noWhitelist[] =
    "[ERROR] SMSCommandConfig::setConfig: Whitelist enable or numbers setting missing\n";
constexpr char noPassword[] =
    "[ERROR] SMSCommandConfig::setConfig: Password enable or text setting missing\n";
const RefusalRow refusalRows[] = {
    {"Whitelist", "whitelist", unparsable, false, false},
    {"Password", "password", unparsable, false, false},
    {"Reboot", "rebootEnabled", unparsable, false, false},
    {"WhitelistEnabled", "whitelist.enabled", noWhitelist, true, false},
    {"WhitelistNumbers", "whitelist.numbers", noWhitelist, true, false},
    {"PasswordEnabled", "password.enabled", noPassword, true, true},
    {"PasswordText", "password.text", noPassword, true, true},
};
class Refusal : public testing::TestWithParam<RefusalRow> {};
TEST_P(Refusal, NamesWhatIsMissing) {
  const RefusalRow& row = GetParam();
  Json::Value settings = json(least);
  const std::string path = row.without;
  const std::size_t dot = path.find('.');
  Json::Value& holder = dot == std::string::npos ? settings : settings[path.substr(0, dot)];
  ASSERT_TRUE(holder.removeMember(dot == std::string::npos ? path : path.substr(dot + 1), nullptr));
  SMSCommandConfig config;
  LogCapture log;
  EXPECT_FALSE(config.setConfig(settings));
  EXPECT_EQ(log.text(), row.log);
  EXPECT_EQ(config.config, settings);
  EXPECT_EQ(config.enabled && config.checkinEnabled, row.flagsRead);
  EXPECT_EQ(config.whitelistEnabled && config.numbers == json("[1]"), row.whitelistRead);
  EXPECT_FALSE(config.passwordEnabled || !config.password.empty());
}
INSTANTIATE_ROWS(Refusal, refusalRows);

TEST(SMSCommandConfig, ThrowsForAValueOfTheWrongType) {
  Json::Value settings = json(least);
  settings["enabled"] = "true";
  SMSCommandConfig config;
  EXPECT_THROW(config.setConfig(settings), Json::LogicError);
}
