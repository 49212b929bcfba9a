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
  for (int command = 0; command <= SMSCMD_COUNT; ++command) EXPECT_FALSE(config.isCommandEnabled(command));
  EXPECT_FALSE(config.enabled || config.whitelistEnabled || config.passwordEnabled);
}

struct FlagRow {
  const char* name;  ///< the only flag that is true; optional flags are missing
  int command;
};
const FlagRow flagRows[] = {
    {"checkinEnabled", 1},      {"rebootEnabled", 2},      {"rmEnabled", 3},
    {"setCellularEnabled", 4},  {"apnEnabled", 5},         {"cellularStatusEnabled", 6},
    {"radioEnabled", 7},        {"ethernetEnabled", 8},    {"wanStatusEnabled", 9},
    {"wifiEnabled", 10},        {"pingEnabled", 11},       {"serialEnabled", 12},
    {"geopositionEnabled", 13}, {"lnsRestartEnabled", 14}, {"wanIpsEnabled", 15},
    {"otherEnabled", 0},
};
TEST_ROWS(Flag, PermitsItsCommandAlone, flagRows) {
  Json::Value settings = json(least);
  settings["enabled"] = settings["checkinEnabled"] = settings["rebootEnabled"] = false;
  settings[GetParam().name] = true;
  SMSCommandConfig config;
  ASSERT_TRUE(config.setConfig(settings));
  for (int command = -1; command <= SMSCMD_COUNT; ++command)
    EXPECT_EQ(config.isCommandEnabled(command), command > 0 && command == GetParam().command) << command;
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
    {"Enabled", "enabled", unparsable, false, false},
    {"Whitelist", "whitelist", unparsable, false, false},
    {"Password", "password", unparsable, false, false},
    {"Checkin", "checkinEnabled", unparsable, false, false},
    {"Reboot", "rebootEnabled", unparsable, false, false},
    {"WhitelistEnabled", "whitelist.enabled", noWhitelist, true, false},
    {"WhitelistNumbers", "whitelist.numbers", noWhitelist, true, false},
    {"PasswordEnabled", "password.enabled", noPassword, true, true},
    {"PasswordText", "password.text", noPassword, true, true},
};
TEST_ROWS(Refusal, NamesWhatIsMissing, refusalRows) {
  const RefusalRow& row = GetParam();
  Json::Value settings = json(least);
  const std::string path = row.without;
  const std::size_t dot = path.find('.');
  Json::Value& holder = dot == std::string::npos ? settings : settings[path.substr(0, dot)];
  ASSERT_TRUE(holder.removeMember(dot == std::string::npos ? path : path.substr(dot + 1), nullptr));
  SMSCommandConfig config;
  config.password = "earlier";
  LogCapture log;
  EXPECT_FALSE(config.setConfig(settings));
  EXPECT_EQ(log.text(), row.log);
  EXPECT_EQ(config.config, settings);
  EXPECT_EQ(config.enabled, row.flagsRead);
  EXPECT_EQ(config.checkinEnabled, row.flagsRead);
  EXPECT_EQ(config.whitelistEnabled && config.numbers == json("[1]"), row.whitelistRead);
  EXPECT_TRUE(!config.passwordEnabled && config.password == "earlier");
}

TEST(SMSCommandConfig, ReadsEachSwitchFromItsOwnKey) {
  for (const char* const on : {"enabled", "whitelist", "password"}) {
    Json::Value settings = json(least);
    settings["enabled"] = settings["whitelist"]["enabled"] = settings["password"]["enabled"] = false;
    (settings[on].isObject() ? settings[on]["enabled"] : settings[on]) = true;
    SMSCommandConfig config;
    ASSERT_TRUE(config.setConfig(settings));
    EXPECT_EQ(config.enabled, on == std::string("enabled"));
    EXPECT_EQ(config.whitelistEnabled, on == std::string("whitelist"));
    EXPECT_EQ(config.passwordEnabled, on == std::string("password"));
    EXPECT_EQ(config.password, "secret");
  }
}

TEST(SMSCommandConfig, ThrowsForAValueOfTheWrongType) {
  for (const char* const key : {"enabled", "checkinEnabled", "pingEnabled"}) {
    Json::Value settings = json(least);
    settings[key] = "true";
    SMSCommandConfig config;
    EXPECT_THROW(config.setConfig(settings), Json::LogicError) << key;
  }
}
