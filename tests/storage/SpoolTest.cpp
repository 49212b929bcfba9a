#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "storage/NoteFile.h"
#include "storage/SpoolEntry.h"
#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"

using testing::HasSubstr;

struct EntryRow {
  const char* name;
  const char* stage;
  const char* text;
  bool isGood = false;
};
const EntryRow entryRows[] = {
    {"Received", "received-0", "{'guid':'1','message':'a','source':'2'}", true},
    {"BeingObeyed", "received-1", "{'guid':'1'}\n{'guid':'2'}", true},
    {"AllObeyed", "received-3", "{'guid':'1'}\n{'guid':'2'}", true},
    {"Merged", "merged-0", "{'guid':'1','part-id':7,'parts':['a',null]}", true},
    {"Begun", "sending-2", "{'guid':'1'}", true},
    {"Sent", "sent-2", "{'guid':'1'}", true},
    {"Refused", "refused-4", "{'guid':'1'}", true},
    {"NoStage", "", "{'guid':'1'}"},
    {"UnknownStage", "lost-2", "{'guid':'1'}"},
    {"MoreObeyedThanThere", "received-3", "{'guid':'1'}"},
    {"NumberMissing", "received", "{'guid':'1'}"},
    {"NumberOfASendMissing", "sending-", "{'guid':'1'}"},
    {"NegativeNumber", "received--1", "{'guid':'1'}"},
    {"NumberWithAZeroInFront", "received-00", "{'guid':'1'}"},
    {"NumberAndMore", "received-0-0", "{'guid':'1'}"},
    {"NumberOf33Bits", "sending-4294967298", "{'guid':'1'}"},
    {"EmptyBatch", "received-0", ""},
    {"BatchOfAnArray", "received-0", "[{'guid':'1'}]"},
    {"SecondRecordIsNotJson", "received-0", "{'guid':'1'}\n{'guid':'2'"},
    {"NoGuid", "received-0", "{'message':'a'}"},
    {"GuidOfTwoWords", "received-0", "{'guid':'1 2'}"},
    {"GuidOfAParent", "received-0", "{'guid':'..'}"},
    {"GuidInAnotherFolder", "merged-0", "{'guid':'../1'}"},
    {"MessageIsAnObject", "received-0", "{'guid':'1','message':{}}"},
    {"SourceIsAnArray", "received-0", "{'guid':'1','source':[]}"},
    {"PartIdIsAText", "received-0", "{'guid':'1','part-id':'x'}"},
    {"PartsAreAnObject", "received-0", "{'guid':'1','parts':{}}"},
    {"PartIsAnArray", "received-0", "{'guid':'1','parts':[[]]}"},
    {"SendFromReceived", "sending-1", "{'guid':'1'}"},
    {"SendFromNowhere", "sending-0", "{'guid':'1'}"},
    {"SendOfNoRecord", "sent-2", "[1]"},
    {"SendOfTwo", "sending-2", "{'guid':'1'}\n{'guid':'2'}"},
};

class Entry : public testing::TestWithParam<EntryRow> {};
TEST_P(Entry, IsReadOnlyIfItCouldHaveBeenWritten) {
  std::string text = std::string(GetParam().text) + '\n';
  std::replace(text.begin(), text.end(), '\'', '"');
  const std::optional<SpoolEntry> entry = entryOf({GetParam().stage, text});
  ASSERT_EQ(entry.has_value(), GetParam().isGood);
  if (entry) {
    const Spool::Note note =
        std::visit([](const auto& kind) { return noteOf(kind).value_or(Spool::Note{}); }, *entry);
    EXPECT_EQ(note.stage + " " + note.text, std::string(GetParam().stage) + " " + text);
  }
}
INSTANTIATE_ROWS(Entry, entryRows);

TEST(Entry, AcceptsARecordNestedAsDeepAsAMessageFile) {
  std::string nested = "1";
  for (int depth = 0; depth < 998; ++depth) nested.insert(0, 1, '[').push_back(']');
  Send send{Send::Stage::Begun, json("{'guid':'1'}"), 2};
  send.record["deep"] = jsonAsItIs(nested);
  EXPECT_TRUE(entryOf(noteOf(send).value_or(Spool::Note{})));
}

TEST(NoteFile, DetectsEachFlippedBitAndEachTruncation) {
  const std::string whole = NoteFile::framed("[{\"guid\":\"1\"}]");
  EXPECT_EQ(NoteFile::unframed(whole), "[{\"guid\":\"1\"}]");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(NoteFile::unframed(whole.substr(0, length))) << length;
    for (int bit = 0; bit < 8; ++bit) {
      std::string flipped = whole;
      flipped[length] = static_cast<char>(flipped[length] ^ (1 << bit));
      EXPECT_FALSE(NoteFile::unframed(flipped)) << length << ' ' << bit;
    }
  }
}

namespace {
class SpoolTest : public testing::Test {
 protected:
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& file : std::filesystem::directory_iterator(folder_))
      all.push_back(file.path().filename());
    std::sort(all.begin(), all.end());
    return all;
  }

  const TemporaryFolder root_;
  const std::string folder_ = root_.path + "/spool";
  Spool spool_{root_.path};
  LogCapture log_;
};

using testing::ElementsAre;
}  // namespace

TEST_F(SpoolTest, KeepsNotesForTheNextDaemonUnderTheirStage) {
  {
    const Spool::Pass pass = spool_.open();
    std::string first = spool_.add({"a", "one"}), second = spool_.add({"a", "two"});
    EXPECT_TRUE(spool_.rename(second, "b-1", true));
    EXPECT_EQ(second, "2.b-1");
    spool_.replace(first, {"c", "three"});
    EXPECT_EQ(first, "3.c");
    spool_.remove(spool_.add({"a", "gone"}));
  }
  EXPECT_THAT(names(), ElementsAre("2.b-1", "3.c", "reserve"));
  struct stat status;
  stat(folder_.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  stat((folder_ + "/2.b-1").c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);

  writeFile(folder_ + "/10.d", NoteFile::framed("ten"));
  Spool next(root_.path);
  const Spool::Pass pass = next.open();
  EXPECT_THAT(pass.names, ElementsAre("2.b-1", "3.c", "10.d"));
  EXPECT_EQ(next.read("2.b-1").value_or(Spool::Note{}).text, "two");
  EXPECT_EQ(next.read("2.b-1").value_or(Spool::Note{}).stage, "b-1");
  EXPECT_EQ(next.add({"a", "four"}), "11.a");
  EXPECT_EQ(log_.text(), "");
}

TEST_F(SpoolTest, SetsAsideOnlyDamagedNotes) {
  std::filesystem::create_directories(folder_ + "/3.folder");
  mkfifo((folder_ + "/2.fifo").c_str(), 0600);
  std::filesystem::create_symlink("/dev/zero", folder_ + "/4.link");
  writeFile(root_.path + "/kept", "whole");
  std::filesystem::create_symlink(root_.path + "/kept", folder_ + "/8.a.new");
  writeFile(folder_ + "/5.torn", "veld 1 9 00000000\n");
  writeFile(folder_ + "/rubbish", "");
  writeFile(folder_ + "/7.a", NoteFile::framed("good"));
  const Spool::Pass pass = spool_.open();
  std::vector<std::string> read;
  for (const std::string& name : pass.names)
    if (const std::optional<Spool::Note> note = spool_.read(name)) read.push_back(note->text);
  EXPECT_EQ(read.size(), 1u);
  EXPECT_THAT(names(), ElementsAre("2.fifo.damaged", "3.folder.damaged", "4.link.damaged", "5.torn.damaged",
                                   "7.a", "reserve", "rubbish.damaged"));
  EXPECT_THAT(log_.text(), HasSubstr("[ERROR] Spool file [" + folder_ +
                                     "/5.torn] is damaged: it is set aside as "
                                     "[5.torn.damaged]\n"));
  EXPECT_EQ(spool_.add({"a", "next"}), "9.a");
  EXPECT_EQ(readFile(root_.path + "/kept"), "whole");
}

TEST_F(SpoolTest, IsLockedByOneDaemonForOnePass) {
  Spool second(root_.path);
  {
    const Spool::Pass pass = spool_.open();
    for (const std::size_t notes : {0U, 1U}) {
      const Spool::Pass other = second.open();
      EXPECT_EQ(other.names.size(), notes);
      second.add({"a", "in memory"});
    }
    second.remove("1.a");
    second.remove("2.a");
  }
  EXPECT_EQ(log_.text(), "[ERROR] Spool [" + folder_ + "] belongs to another daemon\n");
  const Spool::Pass pass = second.open();
  second.add({"a", "written"});
  EXPECT_THAT(names(), ElementsAre("1.a", "reserve"));
}

TEST_F(SpoolTest, RepeatsFailedWritesLater) {
  writeFile(folder_, "in the way");
  {
    const Spool::Pass pass = spool_.open();
    std::string name = spool_.add({"a", "text"});
    EXPECT_EQ(spool_.read(name).value_or(Spool::Note{}).text, "text");
    EXPECT_TRUE(spool_.rename(name, "b", false));
  }
  EXPECT_EQ(log_.text(), "[ERROR] Cannot open spool [" + folder_ + "]: [20][Not a directory]\n");
  std::filesystem::remove(folder_);
  writeFile(folder_ + "/1.a", NoteFile::framed("of another daemon"));
  const Spool::Pass pass = spool_.open();
  EXPECT_THAT(pass.names, ElementsAre("1.a", "2.b"));
  EXPECT_EQ(readFile(folder_ + "/1.a"), NoteFile::framed("of another daemon"));
  EXPECT_EQ(readFile(folder_ + "/2.b"), NoteFile::framed("text"));
}

TEST_F(SpoolTest, KeepsANoteThatCannotBeReplaced) {
  const Spool::Pass pass = spool_.open();
  std::string name = spool_.add({"a", "old"});
  std::filesystem::create_directory(folder_ + "/2.b.new");
  spool_.replace(name, {"b", "new"});
  EXPECT_EQ(name, "1.a");
  EXPECT_THAT(names(), ElementsAre("1.a", "2.b.new", "reserve"));
}

TEST_F(SpoolTest, CreatesARemovedFolderAgain) {
  const Spool::Pass pass = spool_.open();
  spool_.add({"a", "gone with the folder"});
  std::filesystem::remove_all(folder_);
  spool_.add({"a", "kept"});
  EXPECT_THAT(names(), ElementsAre("2.a"));
}
