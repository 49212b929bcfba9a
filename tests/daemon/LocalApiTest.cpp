#include <curl/curl.h>

#include "daemon/LocalApi.h"
#include "tests/CannedApi.h"
#include "tests/CurlCalls.h"
#include "tests/Testing.h"

namespace {
constexpr char url[] = "http://localhost/api/sms";
}

// Expected: "kept" if loading fails and leaves the value unchanged.
const Row<std::string, const char*> settingsRows[] = {
    {"Success", CannedApi::ok("{\"code\": 200, \"result\": {\"a\": 1}, \"x\": 2}"), "{'a':1}"},
    {"NoResult", CannedApi::ok("{\"code\": 200}"), "null"},
    {"HttpStatusIsIgnored", "HTTP/1.1 404 Not Found\r\n\r\n{\"code\": 200, \"result\": 1}", "1"},
    {"OtherCode", CannedApi::ok("{\"code\": 201, \"result\": {}}"), "'kept'"},
    {"NoCode", CannedApi::ok("{\"result\": {}}"), "'kept'"},
    {"NoJson", CannedApi::ok("settings"), "'kept'"},
    {"TextAfterTheObject", CannedApi::ok("{\"code\": 200, \"result\": {}} x"), "'kept'"},
    {"Comment", CannedApi::ok("{\"code\": /* */ 200, \"result\": {}}"), "'kept'"},
    {"KeyTwice", CannedApi::ok("{\"code\": 404, \"code\": 200, \"result\": {}}"), "'kept'"},
    {"TooDeep", CannedApi::ok(std::string(2000, '[')), "'kept'"},
    {"RootIsNotAnObject", CannedApi::ok("200"), "'kept'"},
    {"Redirect", "HTTP/1.1 302 Found\r\nLocation: http://localhost/x\r\nContent-Length: 0\r\n\r\n", "'kept'"},
    {"TruncatedBody", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{\"code\": 200, \"result\": {}}",
     "'kept'"},
    {"ConnectionClosedAtOnce", "", "'kept'"},
};
TEST_ROWS(Settings, AreLoaded, settingsRows) {
  CannedApi api(GetParam().given);
  Json::Value result = "kept";
  EXPECT_EQ(loadFromApi(url, result), json(GetParam().expected) != "kept");
  EXPECT_EQ(result, json(GetParam().expected));
  EXPECT_THAT(api.request(), testing::StartsWith("GET /api/sms HTTP/1.1\r\n"));
}

TEST(LoadFromApi, FailsWithoutASocketAndSetsNoTimeOut) {
  Json::Value result = "kept";
  curlCalls.clear();
  EXPECT_FALSE(loadFromApi(url, result));
  EXPECT_EQ(result, "kept");
  EXPECT_EQ(curlCalls, "UNIX_SOCKET_PATH URL HEADER FOLLOWLOCATION WRITEFUNCTION WRITEDATA cleanup ");
}

TEST(LoadFromApi, ThrowsForACodeThatIsNotAnUnsignedNumber) {
  for (const char* const code : {"\"200\"", "-200"}) {
    const CannedApi api(CannedApi::ok("{\"code\": " + std::string(code) + "}"));
    Json::Value result;
    EXPECT_THROW(loadFromApi(url, result), Json::LogicError) << code;
  }
}

TEST(CurlWriter, AppendsAndCounts) {
  const curl_write_callback writer = curlWriter;  // the exact type that libcurl calls
  char bytes[] = "a\0bcd";
  std::string answer = "x";
  EXPECT_EQ(writer(bytes, 2, 2, &answer), 4u);
  EXPECT_EQ(answer, std::string("xa\0bc", 5));
  EXPECT_EQ(writer(bytes, 2, 2, nullptr), 0u);
}
