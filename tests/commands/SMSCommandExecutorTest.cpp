#include <gmock/gmock.h>

#include "commands/SMSCommandExecutor.h"
#include "tests/CannedApi.h"
#include "tests/CurlCalls.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"

namespace {

constexpr char url[] = "http://localhost/api/command/sms_send";
constexpr char noTransfer[] = "[ERROR] SMSCommandExecutor::sendCommand curl_easy_perform failed\n";
constexpr char noJson[] = "[ERROR] SMSCommandExecutor::sendCommand failed to parse Json response object\n";

std::string requestFailed(const char* code) {
  return "[ERROR] SMSCommandExecutor::sendCommand request failed with response code: " + std::string(code) +
         "\n";
}

}  // namespace

struct AnswerRow {
  const char* name;
  std::string answer;
  std::string log;  ///< empty for success
};
const AnswerRow answerRows[] = {
    {"Success", CannedApi::ok("{\"code\": 200}"), ""},
    {"HttpStatusIsNotLookedAt", "HTTP/1.1 500 Error\r\n\r\n{\"code\": 200}", ""},
    {"OtherCode", CannedApi::ok("{\"code\": 201}"), requestFailed("201")},
    {"CodeIsText", CannedApi::ok("{\"code\": \"200\"}"), requestFailed("0")},
    {"CodeOutOfRange", CannedApi::ok("{\"code\": 4294967496}"), requestFailed("0")},  // 200 and 2 to the 32nd
    {"RootIsNoObject", CannedApi::ok("[200]"), requestFailed("0")},
    {"NegativeCode", CannedApi::ok("{\"code\": -1}"), requestFailed("-1")},
    {"NoCode", CannedApi::ok("{}"), requestFailed("0")},
    {"NullCode", CannedApi::ok("{\"code\": null}"), requestFailed("0")},
    {"NoJson", CannedApi::ok("OK"), noJson},
    {"Large", CannedApi::ok("{\"code\": 200, \"x\": \"" + std::string(100000, 'x') + "\"}"), ""},
    {"Redirect", "HTTP/1.1 302 Found\r\nLocation: http://localhost/x\r\nContent-Length: 0\r\n\r\n", noJson},
    {"CutInTheBody", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{\"code\": 200}", noTransfer},
    {"HungUp", "", noTransfer},
};
TEST_ROWS(Answer, IsJudgedByItsCode, answerRows) {
  const CannedApi api(GetParam().answer);
  LogCapture log;
  EXPECT_EQ(SMSCommandExecutor(url).sendCommand(url, "{}"), GetParam().log.empty());
  EXPECT_EQ(log.text(), GetParam().log);
}

TEST(SMSCommandExecutor, EchoesTheAnswer) {
  const CannedApi api(CannedApi::ok("not JSON"));
  LogCapture log;
  curlCalls.clear();
  SMSCommandExecutor(url).sendCommand(url, "{}");
  EXPECT_EQ(curlCalls,
            "UNIX_SOCKET_PATH URL POSTFIELDS append HTTPHEADER HEADER FOLLOWLOCATION WRITEFUNCTION WRITEDATA "
            "cleanup free ");
  EXPECT_EQ(log.echo(), "SMSCommandExecutor::sendCommand: buff = [not JSON]\n");
}

TEST(SMSCommandExecutor, SendsAMessage) {
  CannedApi api(CannedApi::ok("{\"code\": 500}"));
  LogCapture log;
  EXPECT_FALSE(SMSCommandExecutor(url).execute("+49170", "a \"b\""));
  EXPECT_THAT(api.request(),
              AllOf(testing::StartsWith("POST /api/command/sms_send HTTP/1.1\r\n"),
                    testing::HasSubstr("\r\nContent-Type: application/json\r\n"),
                    testing::EndsWith("\r\n\r\n{\"recipients\": [\"+49170\"], \"message\": \"a \"b\"\"}")));
  EXPECT_EQ(log.text(), "[INFO] SMSCommandExecutor sending [" + std::string(url) +
                            "] command to [+49170] with [a \"b\"] message\n"
                            "[INFO] SMSCommandExecutor::execute postFields = {\"recipients\": [\"+49170\"], "
                            "\"message\": \"a \"b\"\"}\n" +
                            requestFailed("500") +
                            "[ERROR] SMSCommandExecutor::execute sendCommand failed\n");
}

struct ArgumentsRow {
  const char* name;
  std::vector<std::string> arguments;
  const char* list;  ///< as it stands in the body
};
const ArgumentsRow argumentsRows[] = {
    {"None", {}, "[]"},
    {"One", {"a"}, "[\"a\"]"},
    {"Three", {"a", "b", "c"}, "[\"a\",\"b\",\"c\"]"},
};
TEST_ROWS(Arguments, AreListedInTheBody, argumentsRows) {
  CannedApi api(CannedApi::ok("{\"code\": 200}"));
  LogCapture log;
  EXPECT_TRUE(SMSCommandExecutor(url).execute("+49170", GetParam().arguments));
  const std::string body = "{\"recipients\": [\"+49170\"], \"args\": " + std::string(GetParam().list) + "}";
  EXPECT_THAT(api.request(), testing::EndsWith("\r\n\r\n" + body));
  EXPECT_THAT(log.text(),
              testing::EndsWith("[INFO] SMSCommandExecutor::execute postFields = " + body + "\n"));
}

TEST(SMSCommandExecutor, IsTrueForAMessageThatWasTaken) {
  const CannedApi api(CannedApi::ok("{\"code\": 200}"));
  const LogCapture quiet;
  EXPECT_TRUE(SMSCommandExecutor(url).execute("+49170", "a"));
}
