#include <unistd.h>

#include "storage/FolderStorage.h"
#include "storage/MoveFolderStorage.h"
#include "tests/Testing.h"

using testing::HasSubstr;

TEST(FolderStorage, WritesARecordIntoTheFileOfItsGuid) {
  const TemporaryFolder folder;
  FolderStorage storage(folder.path + "/new/tree");
  writeFile(folder.path + "/new/tree/1", std::string(100, 'x'));
  EXPECT_TRUE(storage.save(json("{'guid':'1','message':'hi'}")));
  EXPECT_EQ(readFile(folder.path + "/new/tree/1"), "{\n\t\"guid\" : \"1\",\n\t\"message\" : \"hi\"\n}");
}

TEST(FolderStorage, AcceptsANumberAsGuid) {
  const TemporaryFolder folder;
  EXPECT_TRUE(FolderStorage(folder.path).save(json("{'guid':17}")));
  EXPECT_TRUE(std::filesystem::exists(folder.path + "/17"));
  EXPECT_TRUE(FolderStorage(folder.path).remove(json("{'guid':17}")));
}

TEST(FolderStorage, ReportsAMissingGuidAndAFullDisk) {
  const TemporaryFolder folder;
  FolderStorage storage(folder.path + "/gone");
  std::filesystem::remove(folder.path + "/gone");
  EXPECT_TRUE(storage.save(json("{'guid':'1'}")));
  EXPECT_FALSE(storage.save(json("{'message':'hi'}")));
  EXPECT_FALSE(storage.save(json("[1]")));
  EXPECT_FALSE(std::filesystem::exists(folder.path + "/gone"));
  std::filesystem::create_symlink("/dev/full", folder.path + "/1");
  EXPECT_FALSE(FolderStorage(folder.path).save(json("{'guid':'1'}")));
}

TEST(FolderStorage, IsUsableWithoutItsFolder) {
  const TemporaryFolder folder{{"file", "x"}};
  LogCapture log;
  FolderStorage storage(folder.path + "/file/below");
  EXPECT_THAT(log.text(), HasSubstr("Cannot create path [" + folder.path + "/file/below]: ["));
  EXPECT_EQ(storage.load(Json::nullValue), json("[]"));
}

// Expected: what load returns. If that is nothing, it logs the file.
const Row<std::string, std::string> fileRows[] = {
    {"Record", "{\"guid\":\"1\"}", "[{'guid':'1'}]"},
    {"Comments", "/* a */ {\"guid\":\"1\"} // b", "[{'guid':'1'}]"},
    {"TextBehindTheRecord", "{\"guid\":\"1\"} x", "[{'guid':'1'}]"},
    {"Null", "null", "[null]"},
    {"Number", "7", "[7]"},
    {"Array", "[1]", "[[1]]"},
    {"Empty", "", "[]"},
    {"Truncated", "{\"guid\":\"1", "[]"},
    {"TooDeep", std::string(2000, '['), "[]"},
};
TEST_ROWS(FolderFile, IsLoaded, fileRows) {
  const TemporaryFolder folder{{"name", GetParam().given}};
  FolderStorage storage(folder.path);
  LogCapture log;
  EXPECT_EQ(storage.load(Json::nullValue), json(GetParam().expected));
  const bool logs = GetParam().expected == "[]";
  EXPECT_EQ(log.text().find("[ERROR] Cannot parse JSON from file name: ["), logs ? 0 : std::string::npos);
  EXPECT_EQ(log.text().empty(), !logs) << log.text();
  EXPECT_EQ(readFile(folder.path + "/name"), GetParam().given);
}

TEST(FolderStorage, SkipsUnreadableFiles) {
  const TemporaryFolder folder{{"1", "{\"guid\":\"1\"}"}, {"sub-folder/x", ""}, {"tmp/x", ""}};
  ASSERT_EQ(symlink("/nowhere", (folder.path + "/link").c_str()), 0);
  ASSERT_EQ(chdir("/"), 0);
  LogCapture log;
  EXPECT_EQ(FolderStorage(folder.path).load(Json::nullValue), json("[{'guid':'1'}]"));
  const std::string text = log.text();
  EXPECT_THAT(text, HasSubstr("[ERROR] Cannot open file link: [2][No such file or directory]\n"));
  EXPECT_THAT(text, HasSubstr("[ERROR] Cannot parse JSON from file sub-folder: ["));
  EXPECT_THAT(text, testing::Not(HasSubstr("file tmp")));  // stat() finds /tmp instead
}

// The folder holds an object and an array. Expected: how many of them the filter selects.
const Row<const char*, unsigned> filterRows[] = {
    {"Null", "null", 2},
    {"NoMember", "{}", 2},
    {"EqualMember", "{'guid':'1'}", 1},
    {"WholeRecord", "{'guid':'1','retries':3,'parts':['a',null]}", 1},
    {"KeyWithNul", "{'a\\u0000b':1}", 1},
    {"OtherValue", "{'guid':'2'}", 0},
    {"OtherType", "{'guid':1}", 0},
    {"OneOfTwoDiffers", "{'guid':'1','retries':2}", 0},
    {"DeepDifference", "{'parts':['a','b']}", 0},
    {"MissingKey", "{'status':null}", 0},
    {"NoObject", "['1']", 0},
};
TEST_ROWS(Filter, SelectsTheRecordsWithItsMembers, filterRows) {
  const TemporaryFolder folder{{"1", R"({"guid":"1","retries":3,"parts":["a",null],"a\u0000b":1})"},
                               {"2", "[1]"}};
  EXPECT_EQ(FolderStorage(folder.path).load(json(GetParam().given)).size(), GetParam().expected);
}

TEST(FolderStorage, RemovesByGuidOrEverything) {
  const TemporaryFolder folder{{"1", "x"}, {"2", "x"}};
  FolderStorage storage(folder.path);
  EXPECT_TRUE(storage.remove(json("{'guid':'1','message':'differs'}")));
  LogCapture log;
  EXPECT_FALSE(storage.remove(json("{'guid':'1'}")));
  EXPECT_FALSE(storage.remove(json("{}")));
  EXPECT_EQ(readFile(folder.path + "/2"), "x");
  EXPECT_TRUE(storage.remove(Json::nullValue));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path));
  EXPECT_FALSE(storage.remove(Json::nullValue));
  const std::string failed = "[ERROR] Cannot remove file " + folder.path;
  EXPECT_THAT(log.text(), AllOf(testing::StartsWith(failed + "/1: [2][No such file or directory]\nrm: "),
                                HasSubstr("\n" + failed + "/: [")));
}

TEST(MoveFolderStorage, LeavesNothingInTheStagingFolder) {
  const TemporaryFolder folder;
  MoveFolderStorage storage(folder.path + "/status", folder.path + "/staging");
  EXPECT_TRUE(storage.save(json("{'guid':'1','message':'old'}")));
  EXPECT_TRUE(storage.save(json("{'guid':'1','message':'new'}")));
  EXPECT_FALSE(storage.save(json("{'message':'no guid'}")));
  EXPECT_EQ(storage.load(Json::nullValue), json("[{'guid':'1','message':'new'}]"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path + "/staging"));
}

TEST(MoveFolderStorage, ReportsAFailedMoveAndKeepsTheStagedFile) {
  const TemporaryFolder folder;
  MoveFolderStorage storage(folder.path + "/status", folder.path + "/staging");
  LogCapture log;
  errno = 0;
  EXPECT_FALSE(storage.save(json("{'guid':'1 2'}")));                // the shell splits the guid
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] Error 0: Success\n"));  // mv hides its errno
  EXPECT_TRUE(std::filesystem::exists(folder.path + "/staging/1 2"));
}

TEST(MoveFolderStorage, DoesNotReplaceAMissingFolderByTheFile) {
  const TemporaryFolder folder;
  MoveFolderStorage storage(folder.path + "/status", folder.path + "/staging");
  std::filesystem::remove(folder.path + "/status");
  const LogCapture quiet;
  EXPECT_FALSE(storage.save(json("{'guid':'1'}")));
  EXPECT_FALSE(std::filesystem::exists(folder.path + "/status"));
}
