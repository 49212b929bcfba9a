#include "tests/Commands.h"
#include "tests/Testing.h"

namespace {
const Json::Value required = merged(
    json(commandSettings), json("{'whitelist':{'enabled':true,'numbers':[1]},'password':{'enabled':true}}"));
}

TEST(SMSCommandConfig, PermitsNothingBeforeSetConfig) {
  const SMSCommandConfig config;
  for (int command = 0; command <= SMSCMD_COUNT; ++command) EXPECT_FALSE(config.isCommandEnabled(command));
  EXPECT_FALSE(config.enabled || config.whitelistEnabled || config.passwordEnabled);
}

TEST(SMSCommandConfig, PermitsEachCommandByItsOwnFlag) {
  const char* const flags[] = {
      "otherEnabled",       "checkinEnabled",     "rebootEnabled",         "rmEnabled",
      "setCellularEnabled", "apnEnabled",         "cellularStatusEnabled", "radioEnabled",
      "ethernetEnabled",    "wanStatusEnabled",   "wifiEnabled",           "pingEnabled",
      "serialEnabled",      "geopositionEnabled", "lnsRestartEnabled",     "wanIpsEnabled"};
  for (int permitted = 0; permitted < SMSCMD_COUNT; ++permitted) {
    Json::Value settings = required;
    settings["enabled"] = settings["checkinEnabled"] = settings["rebootEnabled"] = false;
    settings[flags[permitted]] = true;
    SMSCommandConfig config;
    ASSERT_TRUE(config.setConfig(settings));
    for (int command = -1; command <= SMSCMD_COUNT; ++command)
      EXPECT_EQ(config.isCommandEnabled(command), command > 0 && command == permitted) << command;
  }
}

constexpr char unparsable[] = "Unable to parse SMS Commands configuration\n";
constexpr char noWhitelist[] = "Whitelist enable or numbers setting missing\n";
constexpr char noPassword[] = "Password enable or text setting missing\n";
// Given: the member that the test removes, as KEY or KEY.KEY. Expected: the error that is logged.
const Row<std::string, const char*> refusalRows[] = {
    {"Enabled", "enabled", unparsable},
    {"Whitelist", "whitelist", unparsable},
    {"Password", "password", unparsable},
    {"Checkin", "checkinEnabled", unparsable},
    {"Reboot", "rebootEnabled", unparsable},
    {"WhitelistEnabled", "whitelist.enabled", noWhitelist},
    {"WhitelistNumbers", "whitelist.numbers", noWhitelist},
    {"PasswordEnabled", "password.enabled", noPassword},
    {"PasswordText", "password.text", noPassword},
};
TEST_ROWS(MissingMember, IsLoggedAndEarlierMembersAreKept, refusalRows) {
  const auto& [name, path, error] = GetParam();
  Json::Value settings = required;
  const std::size_t dot = path.find('.');
  Json::Value& holder = dot == std::string::npos ? settings : settings[path.substr(0, dot)];
  ASSERT_TRUE(holder.removeMember(dot == std::string::npos ? path : path.substr(dot + 1), nullptr));
  SMSCommandConfig config;
  config.password = "earlier";
  LogCapture log;
  EXPECT_FALSE(config.setConfig(settings));
  EXPECT_EQ(log.text(), std::string("[ERROR] SMSCommandConfig::setConfig: ") + error);
  EXPECT_EQ(config.config, settings);
  EXPECT_EQ(config.enabled, error != unparsable);
  EXPECT_EQ(config.checkinEnabled, error != unparsable);
  EXPECT_EQ(config.whitelistEnabled && config.numbers == json("[1]"), error == noPassword);
  EXPECT_TRUE(!config.passwordEnabled && config.password == "earlier");
}

TEST(SMSCommandConfig, ReadsEachSwitchFromItsOwnKey) {
  for (const std::string on : {"enabled", "whitelist", "password"}) {
    Json::Value settings = required;
    settings["enabled"] = settings["whitelist"]["enabled"] = settings["password"]["enabled"] = false;
    (on == "enabled" ? settings[on] : settings[on]["enabled"]) = true;
    SMSCommandConfig config;
    ASSERT_TRUE(config.setConfig(settings));
    EXPECT_EQ(config.enabled, on == "enabled");
    EXPECT_EQ(config.whitelistEnabled, on == "whitelist");
    EXPECT_EQ(config.passwordEnabled, on == "password");
    EXPECT_EQ(config.password, "secret");
  }
}

TEST(SMSCommandConfig, ThrowsForAValueOfTheWrongType) {
  for (const char* const key : {"enabled", "checkinEnabled", "pingEnabled"}) {
    Json::Value settings = required;
    settings[key] = "true";
    SMSCommandConfig config;
    EXPECT_THROW(config.setConfig(settings), Json::LogicError) << key;
  }
}
