#include "commands/CommandTable.h"
#include "tests/CannedApi.h"
#include "tests/Commands.h"
#include "tests/Testing.h"

using testing::EndsWith;

struct ParseRow {
  const char* name;
  const char* message;
  SMSCMD id;  ///< SMSCMD_UNKNOWN if the message is refused
  const char* password;
  std::vector<std::string> args;
  std::string log;  ///< the last line of the log
};
constexpr char parsed[] = "[INFO] SMSCommand::parseCommand: ]args\n";
constexpr char noContent[] =
    "[ERROR] SMSCommand::parseCommand: strBegin == std::string:npos, no content in SMS command\n";
constexpr char noPasswordOrCommand[] =
    "[ERROR] SMSCommand::parseCommand: failed to find password or command\n";
constexpr char noCommand[] = "[ERROR] SMSCommand::parseCommand: failed to find a command in SMS message\n";
std::string invalid(const char* keyword) {
  return "[ERROR] SMSCommand::parseCommand: Invalid command string [" + std::string(keyword) + "]\n";
}
const ParseRow parseRows[] = {
    {"CommandAlone", "#checkin", SMSCMD_CHECKIN, "", {}, parsed},
    {"BlanksAtTheEnds", "\t #REBOOT \t", SMSCMD_REBOOT, "", {}, parsed},
    {"Password", "p secret #Checkin", SMSCMD_CHECKIN, "secret", {}, parsed},
    {"PasswordWithHash", "p #a,b! #checkin", SMSCMD_CHECKIN, "#a,b!", {}, parsed},
    {"ManyWords", "#ping a a a a a a a a a", SMSCMD_PING, "", std::vector<std::string>(9, "a"), parsed},
    {"UpperCaseP", "P secret #ping a", SMSCMD_PING, "secret", {"a"}, parsed},
    {"TwoHashes", "##ping", SMSCMD_UNKNOWN, "", {}, invalid("#ping")},
    {"TabInside", "#ping\ta", SMSCMD_UNKNOWN, "", {}, invalid("ping#011a")},
    {"LineFeedAtTheEnd", "#ping\n", SMSCMD_UNKNOWN, "", {}, invalid("ping#012")},
    {"LineFeedAtTheStart", "\n#ping", SMSCMD_UNKNOWN, "", {"\n#ping"}, noPasswordOrCommand},
    {"Empty", "", SMSCMD_UNKNOWN, "", {}, noContent},
    {"BlanksOnly", " \t ", SMSCMD_UNKNOWN, "", {}, noContent},
    {"NoHash", "checkin", SMSCMD_UNKNOWN, "", {"checkin"}, noPasswordOrCommand},
    {"PAlone", "p", SMSCMD_UNKNOWN, "", {"p"}, noPasswordOrCommand},
    {"PBeginsAWord", "password #checkin", SMSCMD_UNKNOWN, "", {"password", "#checkin"}, noPasswordOrCommand},
    {"NoCommandAfterPassword", "p secret", SMSCMD_UNKNOWN, "secret", {"p", "secret"}, noCommand},
    {"NoHashAfterPassword", "p secret checkin", SMSCMD_UNKNOWN, "secret", {}, invalid("")},
    {"TwoBlanksBeforeTheCommand", "p secret  #checkin", SMSCMD_UNKNOWN, "secret", {"#checkin"}, invalid("")},
    {"PasswordOfTwoWords", "p my secret #checkin", SMSCMD_UNKNOWN, "my", {"#checkin"}, invalid("")},
    {"UnknownKeyword", "#Format", SMSCMD_UNKNOWN, "", {}, invalid("format")},
    {"KeywordWithSuffix", "#pings", SMSCMD_UNKNOWN, "", {}, invalid("pings")},
};
TEST_ROWS(Parse, FindsTheCommand, parseRows) {
  const ParseRow& row = GetParam();
  const Commands commands;
  ParsedSMSCommand command;
  LogCapture log;
  EXPECT_EQ(commands.parseCommand(row.message, command), row.id != SMSCMD_UNKNOWN);
  EXPECT_THAT(log.text(), EndsWith(row.log));
  EXPECT_EQ(command.id, row.id);
  EXPECT_EQ(command.password, row.password);
  EXPECT_EQ(command.args, row.args);
}

// The tests of the documents compare keyword, path and flag of each command with local-api.md.
TEST(CommandTable, ListsTheCommandsInOrder) {
  std::string rows;
  for (const CommandRow& row : commandRows)
    rows += std::to_string(row.id) + row.name + "=" + std::to_string(row.executor) + " ";
  EXPECT_EQ(rows,
            "1SMSCMD_CHECKIN=1 2SMSCMD_REBOOT=0 3SMSCMD_RM=2 4SMSCMD_SETCELLULAR=3 5SMSCMD_APN=4 "
            "6SMSCMD_CELLULARSTATUS=5 7SMSCMD_RADIO=6 8SMSCMD_ETHERNET=7 9SMSCMD_WAN=8 10SMSCMD_WIFI=9 "
            "11SMSCMD_PING=10 12SMSCMD_SERIAL=11 13SMSCMD_GEOPOSITION=12 15SMSCMD_WANIPS=15 "
            "14SMSCMD_LNSRESTART=13 0SMSCMD_UNKNOWN=14 ");
}

struct ValidateRow {
  const char* name;
  const char* changes;  ///< to commandSettings
  const char* message;
  const char* source;
  std::string log;  ///< the last line of the log
};
constexpr char succeeded[] = "[INFO] SMSCommand::validateSMSCommand validation of command succeeded.\n";
constexpr char disabled[] = "[ERROR] SMSCommand::validateSMSCommand: SMS Commands are disabled\n";
constexpr char stranger[] = "[ERROR] SMSCommand::whiteListGood phone number not in white list\n";
constexpr char wrongPassword[] = "[ERROR] SMSCommand::passwordGood password did not match\n";
constexpr char listOn[] = "{'whitelist':{'enabled':true}}";
constexpr char passwordOn[] = "{'password':{'enabled':true}}";
const ValidateRow validateRows[] = {
    {"FlagOfTheCommandIsOff", "{}", "#ping", "4567890", succeeded},
    {"Disabled", "{'enabled':false}", "#ping", "1234567", disabled},
    {"ListedNumber", listOn, "#ping", "1234567", succeeded},
    {"ListedText", listOn, "#ping", "+49170", succeeded},
    {"Stranger", listOn, "#ping", "4567890", stranger},
    {"StrangerIsRefusedBeforeParsing", listOn, "", "4567890", stranger},
    {"PlusMissing", listOn, "#ping", "49170", stranger},
    {"PrefixOfAListedNumber", listOn, "#ping", "123456", stranger},
    {"ListedNumberWithSuffix", listOn, "#ping", "12345678", stranger},
    {"NoNumber", listOn, "#ping", "", stranger},
    {"EmptyWhitelist", "{'whitelist':{'enabled':true,'numbers':[]}}", "#ping", "1234567", stranger},
    {"WhitelistIsText", "{'whitelist':{'enabled':true,'numbers':'1234567'}}", "#ping", "1234567", stranger},
    {"NoCommand", "{}", "hello", "1234567", noPasswordOrCommand},
    {"RightPassword", passwordOn, "p secret #ping", "4567890", succeeded},
    {"WrongPassword", passwordOn, "p Secret #ping", "4567890", wrongPassword},
    {"PrefixOfThePassword", passwordOn, "p secre #ping", "4567890", wrongPassword},
    {"EmptyPassword", "{'password':{'enabled':true,'text':''}}", "#ping", "4567890", succeeded},
    {"PasswordIsANumber", "{'password':{'enabled':true,'text':1234}}", "p 1234 #ping", "4567890", succeeded},
    {"PasswordMissing", passwordOn, "#ping", "1234567", wrongPassword},
    {"PasswordWithSuffix", passwordOn, "p secrets #ping", "1234567", wrongPassword},
    {"CommandIsCheckedBeforeThePassword", passwordOn, "p wrong #format", "1234567", invalid("format")},
    {"UnneededPasswordIsIgnored", "{}", "p wrong #ping", "4567890", succeeded},
};
TEST_ROWS(Validate, ChecksNumberTextAndPassword, validateRows) {
  const ValidateRow& row = GetParam();
  const Commands commands(row.changes);
  LogCapture log;
  EXPECT_EQ(commands.validateSMSCommand(row.message, row.source), row.log == succeeded);
  EXPECT_THAT(log.text(), EndsWith(row.log));
}

TEST(Validate, ThrowsForAWhitelistThatIsAnObject) {
  const Commands commands("{'whitelist':{'enabled':true,'numbers':{'1234567':'1234567'}}}");
  EXPECT_THROW(commands.validateSMSCommand("#ping", "1234567"), Json::LogicError);
}

TEST(Execute, RefusesACommandThatIsNotPermitted) {
  Commands commands;
  CannedApi api("");
  LogCapture log;
  EXPECT_FALSE(commands.executeCommand(" p secret #ping a b", "+49170"));
  EXPECT_FALSE(commands.executeCommand("#", "1"));
  EXPECT_EQ(api.request(), "");
  EXPECT_EQ(log.text(),
            "[INFO] SMSCommand::executeCommand cmd: p secret #ping a b, phoneNumber:+49170\n"
            "[INFO] SMSCommand::parseCommand message = [p secret #ping a b]\n"
            "[INFO] SMSCommand::parseCommand: cmd [SMSCMD_PING] pass[secret] argc[2] argv[\n"
            "[INFO]              a\n[INFO]              b\n" +
                std::string(parsed) +
                "[ERROR] SMSCommand::executeCommand Bad command, either not enabled, or command was invalid\n"
                "[INFO] SMSCommand::executeCommand cmd:#, phoneNumber:1\n"
                "[INFO] SMSCommand::parseCommand message = [#]\n"
                "[INFO] SMSCommand::parseCommand: cmd [SMSCMD_UNKNOWN] pass[] argc[0] argv[\n" +
                parsed + invalid(""));
}

TEST(Execute, ReturnsTrueWhenTheRequestFails) {
  // Only validateSMSCommand checks "enabled", the whitelist and the password.
  Commands commands(
      "{'pingEnabled':true,'enabled':false,'whitelist':{'enabled':true},'password':{'enabled':true}}");
  LogCapture log;
  EXPECT_TRUE(commands.executeCommand("#ping \"\\", "1"));  // the body has these characters unescaped
  EXPECT_THAT(
      log.text(),
      EndsWith(
          "[INFO] SMSCommandExecutor sending [http://localhost/api/command/do_ping_through_sms] command to "
          "[1] with args:\n[INFO]              \"\\\n"
          "[INFO] SMSCommandExecutor::execute postFields = {\"recipients\": [\"1\"], \"args\": [\"\"\\\"]}\n"
          "[ERROR] SMSCommandExecutor::sendCommand curl_easy_perform failed\n"
          "[ERROR] SMSCommandExecutor::execute sendCommand failed\n"));
}
