#include "standalone/api/CommandRequest.h"
#include "standalone/api/Http.h"
#include "standalone/api/Reply.h"
#include "standalone/api/StrictJson.h"
#include "tests/Rows.h"

using namespace Standalone;

const Row<std::string, HttpState> httpRows[] = {
    {"Plain", "GET /a HTTP/1.1\r\n\r\n", HttpState::Whole},
    {"Body", "POST /a HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}", HttpState::Whole},
    {"LengthInSmallLetters", "POST /a HTTP/1.1\r\ncontent-length:2\r\n\r\n{}", HttpState::Whole},
    {"NoEndOfHead", "GET /a HTTP/1.1\r\n", HttpState::Incomplete},
    {"HalfABody", "POST /a HTTP/1.1\r\nContent-Length: 2\r\n\r\n{", HttpState::Incomplete},
    {"BytesAfterTheBody", "POST /a HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}{", HttpState::Wrong},
    {"TwoLengths", "POST /a HTTP/1.1\r\nContent-Length: 2\r\nContent-Length: 2\r\n\r\n{}", HttpState::Wrong},
    {"NegativeLength", "POST /a HTTP/1.1\r\nContent-Length: -2\r\n\r\n{}", HttpState::Wrong},
    {"HugeLength", "POST /a HTTP/1.1\r\nContent-Length: 9999999\r\n\r\n{}", HttpState::Wrong},
    {"NoLength", "POST /a HTTP/1.1\r\nContent-Length:\r\n\r\n{}", HttpState::Wrong},
    {"Chunks", "POST /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n", HttpState::Wrong},
    {"HeaderWithoutColon", "GET /a HTTP/1.1\r\nHost\r\n\r\n", HttpState::Wrong},
    {"OtherVersion", "GET /a HTTP/2\r\n\r\n", HttpState::Wrong},
    {"FourWords", "GET /a HTTP/1.1 b\r\n\r\n", HttpState::Wrong},
    {"NoPath", "GET a HTTP/1.1\r\n\r\n", HttpState::Wrong},
    {"LongerThanOneMebibyte", std::string((1 << 20) + 1, 'a'), HttpState::Wrong},
};
TEST_ROWS(Http, IsRead, httpRows) {
  HttpRequest request;
  EXPECT_EQ(parseHttp(GetParam().given, request), GetParam().expected);
}

const Row<const char*, bool> bodyRows[] = {
    {"Plain", R"({"recipients": ["+49170"], "args": ["a", ""]})", true},
    {"NoArguments", R"({"recipients": ["49170"], "args": []})", true},
    {"ThirdMember", R"({"recipients": ["+49170"], "args": [], "c": 1})", false},
    {"OneMember", R"({"recipients": ["+49170"]})", false},
    {"OtherMember", R"({"recipients": ["+49170"], "message": []})", false},
    {"MemberTwice", R"({"recipients": ["+49170"], "args": ["a"], "recipients": ["+49666"]})", false},
    {"TwoRecipients", R"({"recipients": ["+49170", "+49666"], "args": []})", false},
    {"NoRecipient", R"({"recipients": [], "args": []})", false},
    {"RecipientIsText", R"({"recipients": "+49170", "args": []})", false},
    {"RecipientIsNumber", R"({"recipients": [49170], "args": []})", false},
    {"RecipientIsName", R"({"recipients": ["Pump"], "args": []})", false},
    {"RecipientIsOption", R"({"recipients": ["--wait"], "args": []})", false},
    {"ArgsIsText", R"({"recipients": ["+49170"], "args": "a"})", false},
    {"ArgumentIsNumber", R"({"recipients": ["+49170"], "args": [1]})", false},
    {"ArgumentHasNul", R"({"recipients": ["+49170"], "args": ["a\u0000b"]})", false},
    {"Array", R"(["recipients", "args"])", false},
    {"Comment", R"({"recipients": ["+49170"], "args": []} // a)", false},
    {"TextAfterTheObject", R"({"recipients": ["+49170"], "args": []} {})", false},
    {"QuoteInArgument", R"({"recipients": ["+49170"], "args": ["a"b"]})", false},
};
TEST_ROWS(Command, IsAccepted, bodyRows) {
  EXPECT_EQ(parseCommandRequest(GetParam().given).has_value(), GetParam().expected);
}

TEST(Command, KeepsSenderAndArguments) {
  const auto command =
      parseCommandRequest(R"({"recipients": ["+49170"], "args": ["a", ""]})").value_or(CommandRequest{});
  EXPECT_EQ(command.sender, "+49170");
  EXPECT_EQ(command.args, (std::vector<std::string>{"a", ""}));
}

TEST(StrictJson, NamesLineAndColumnOfAnError) {
  std::string fault;
  EXPECT_FALSE(parseStrictJson("{\n  \"a\": 1,\n  b\n}", fault));
  EXPECT_NE(fault.find("Line 3, Column 3"), std::string::npos) << fault;
  EXPECT_EQ(fault.find('\n'), std::string::npos) << fault;
}

TEST(StrictJson, RefusesDeepNesting) {
  std::string fault;
  EXPECT_FALSE(parseStrictJson(std::string(100'000, '['), fault));
  EXPECT_NE(fault, "");
}

const Row<std::string, std::string> replyRows[] = {
    {"Output", " 3 answers\n", "3 answers"},
    {"Nothing", "\n", "done"},
    {"LineFeed", "a\nb", "a\nb"},
    {"ControlCharacter", "a\tb\x1b[0m", "a?b?[0m"},
    {"NoUtf8", "a\xff\xc3", "a??"},
    {"ThreeMessages", times(459, "a"), times(459, "a")},
    {"MoreThanThree", times(460, "a"), times(459, "a")},
    {"ExtensionTable", times(300, "€"), times(228, "€")},
    {"Ucs2", times(300, "Ж"), times(201, "Ж")},
    {"Emoji", times(300, "🙂"), times(99, "🙂")},
};
TEST_ROWS(Reply, FitsThreeMessages, replyRows) {
  EXPECT_EQ(replyText(GetParam().given, true), GetParam().expected);
}

TEST(Reply, SaysThatASilentProgramFailed) {
  EXPECT_EQ(replyText("", false), "failed");
  EXPECT_EQ(replyText("no host\n", false), "no host");
}
