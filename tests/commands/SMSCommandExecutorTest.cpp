#include "commands/SMSCommandExecutor.h"
#include "tests/CannedApi.h"
#include "tests/CurlCalls.h"
#include "tests/Testing.h"

namespace {
constexpr char url[] = "http://localhost/api/command/sms_send";
constexpr char noTransfer[] = "curl_easy_perform failed";
constexpr char noJson[] = "failed to parse Json response object";
constexpr char noCode[] = "request failed with response code: 0";
}  // namespace

// Given: the bytes of the answer. Expected: the error that is logged, or an empty text for success.
const Row<std::string, const char*> answerRows[] = {
    {"Success", CannedApi::ok("{\"code\": 200}"), ""},
    {"HttpStatusIsIgnored", "HTTP/1.1 500 Error\r\n\r\n{\"code\": 200}", ""},
    {"OtherCode", CannedApi::ok("{\"code\": 201}"), "request failed with response code: 201"},
    {"CodeIsText", CannedApi::ok("{\"code\": \"200\"}"), noCode},
    {"CodeOutOfRange", CannedApi::ok("{\"code\": 4294967496}"), noCode},  // 200 + 2^32
    {"RootIsNotAnObject", CannedApi::ok("[200]"), noCode},
    {"NegativeCode", CannedApi::ok("{\"code\": -1}"), "request failed with response code: -1"},
    {"NoCode", CannedApi::ok("{}"), noCode},
    {"NoJson", CannedApi::ok("OK"), noJson},
    {"Large", CannedApi::ok("{\"code\": 200, \"x\": \"" + std::string(100000, 'x') + "\"}"), ""},
    {"Redirect", "HTTP/1.1 302 Found\r\nLocation: http://localhost/x\r\nContent-Length: 0\r\n\r\n", noJson},
    {"TruncatedBody", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{\"code\": 200}", noTransfer},
    {"ConnectionClosedAtOnce", "", noTransfer},
};
TEST_ROWS(Answer, IsASuccessOnlyWithCode200, answerRows) {
  const CannedApi api(GetParam().given);
  LogCapture log;
  const std::string error = GetParam().expected;
  EXPECT_EQ(SMSCommandExecutor(url).sendCommand(url, "{}"), error.empty());
  EXPECT_EQ(log.text(), error.empty() ? "" : "[ERROR] SMSCommandExecutor::sendCommand " + error + "\n");
}

TEST(SMSCommandExecutor, SetsTheCurlOptionsAndPrintsTheAnswer) {
  const CannedApi api(CannedApi::ok("not JSON"));
  LogCapture log;
  curlCalls.clear();
  SMSCommandExecutor(url).sendCommand(url, "{}");
  EXPECT_EQ(curlCalls,
            "UNIX_SOCKET_PATH URL POSTFIELDS append HTTPHEADER HEADER FOLLOWLOCATION WRITEFUNCTION WRITEDATA "
            "cleanup free ");
  EXPECT_EQ(log.echo(), "SMSCommandExecutor::sendCommand: buff = [not JSON]\n");
}

TEST(SMSCommandExecutor, PostsAMessageAndLogsTheFailure) {
  CannedApi api(CannedApi::ok("{\"code\": 500}"));
  LogCapture log;
  EXPECT_FALSE(SMSCommandExecutor(url).execute("+49170", "a \"b\""));
  const std::string body = "{\"recipients\": [\"+49170\"], \"message\": \"a \"b\"\"}";
  EXPECT_THAT(api.request(), AllOf(testing::StartsWith("POST /api/command/sms_send HTTP/1.1\r\n"),
                                   testing::HasSubstr("\r\nContent-Type: application/json\r\n"),
                                   testing::EndsWith("\r\n\r\n" + body)));
  EXPECT_EQ(log.text(), "[INFO] SMSCommandExecutor sending [" + std::string(url) +
                            "] command to [+49170] with [a \"b\"] message\n"
                            "[INFO] SMSCommandExecutor::execute postFields = " +
                            body +
                            "\n"
                            "[ERROR] SMSCommandExecutor::sendCommand request failed with response code: 500\n"
                            "[ERROR] SMSCommandExecutor::execute sendCommand failed\n");
}

// Given: the arguments. Expected: the array of arguments in the body.
const Row<std::vector<std::string>, const char*> argumentsRows[] = {
    {"None", {}, "[]"},
    {"One", {"a"}, "[\"a\"]"},
    {"Three", {"a", "b", "c"}, "[\"a\",\"b\",\"c\"]"},
};
TEST_ROWS(Arguments, AreListedInTheBody, argumentsRows) {
  CannedApi api(CannedApi::ok("{\"code\": 200}"));
  LogCapture log;
  EXPECT_TRUE(SMSCommandExecutor(url).execute("+49170", GetParam().given));
  const std::string body =
      "{\"recipients\": [\"+49170\"], \"args\": " + std::string(GetParam().expected) + "}";
  EXPECT_THAT(api.request(), testing::EndsWith("\r\n\r\n" + body));
  EXPECT_THAT(log.text(),
              testing::EndsWith("[INFO] SMSCommandExecutor::execute postFields = " + body + "\n"));
}
