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
    {"Received", "received-0-0", "[{'guid':'1','message':'a','source':'2'}]", true},
    {"OfferedAndFiled", "received-1-2", "[{'guid':'1'},{'guid':'2'}]", true},
    {"Merged", "merged-0-0", "[{'guid':'1','part-id':7,'parts':['a',null]}]", true},
    {"Begun", "sending", "{'from':2,'identity':'1 2','record':{'guid':'1'}}", true},
    {"Refused", "refused", "{'from':4,'identity':'1 2','record':{'guid':'1'}}", true},
    {"SentAndFiled", "sent-filed", "{'from':2,'identity':'1 2','record':{'guid':'1'}}", true},
    {"BeingObeyed", "received-0-1-obeying", "[{'guid':'1'},{'guid':'2'}]", true},
    {"NoneLeftToObey", "received-0-1-obeying", "[{'guid':'1'}]"},
    {"NoStage", "", "[{'guid':'1'}]"},
    {"UnknownStage", "lost", "{'from':2,'identity':'1 2','record':{'guid':'1'}}"},
    {"MoreOfferedThanThere", "received-0-2", "[{'guid':'1'}]"},
    {"MoreFiledThanOffered", "received-1-0", "[{'guid':'1'}]"},
    {"CountMissing", "received-0", "[{'guid':'1'}]"},
    {"NegativeCount", "received--1-0", "[{'guid':'1'}]"},
    {"CountTooMany", "received-0-0-0", "[{'guid':'1'}]"},
    {"EmptyBatch", "received-0-0", "[]"},
    {"BatchOfAnObject", "received-0-0", "{'guid':'1'}"},
    {"NoGuid", "received-0-0", "[{'message':'a'}]"},
    {"GuidOfTwoWords", "received-0-0", "[{'guid':'1 2'}]"},
    {"GuidOfAParent", "received-0-0", "[{'guid':'..'}]"},
    {"GuidInAnotherFolder", "merged-0-0", "[{'guid':'../1'}]"},
    {"MessageIsAnObject", "received-0-0", "[{'guid':'1','message':{}}]"},
    {"SourceIsAnArray", "received-0-0", "[{'guid':'1','source':[]}]"},
    {"PartIdIsAText", "received-0-0", "[{'guid':'1','part-id':'x'}]"},
    {"PartsAreAnObject", "received-0-0", "[{'guid':'1','parts':{}}]"},
    {"PartIsAnArray", "received-0-0", "[{'guid':'1','parts':[[]]}]"},
    {"SendFromReceived", "sending", "{'from':1,'identity':'1 2','record':{'guid':'1'}}"},
    {"SendFromNowhere", "sending", "{'from':0,'identity':'1 2','record':{'guid':'1'}}"},
    {"SendWithoutIdentity", "sent", "{'from':2,'record':{'guid':'1'}}"},
    {"EmptyIdentity", "sent", "{'from':2,'identity':'','record':{'guid':'1'}}"},
    {"SendOfNoRecord", "sent", "{'from':2,'identity':'1 2','record':[1]}"},
    {"SendStageOfABatch", "sending", "[{'guid':'1'}]"},
};

namespace {

// The note that stageOf and textOf make of the entry.
std::string again(const SpoolEntry& entry) {
  return std::visit(
      [](const auto& kind) {
        using Kind = std::decay_t<decltype(kind)>;
        if constexpr (std::is_base_of_v<Batch, Kind>)
          return stageOf(kind) + " " + textOf(kind.records).value_or("");
        else
          return stageOf(kind) + " " + textOf(kind).value_or("");
      },
      entry);
}

}  // namespace

class Entry : public testing::TestWithParam<EntryRow> {};
TEST_P(Entry, IsReadOnlyIfItCouldHaveBeenWritten) {
  std::string text = GetParam().text;
  std::replace(text.begin(), text.end(), '\'', '"');
  const std::optional<SpoolEntry> entry = parseEntry({GetParam().stage, text});
  ASSERT_EQ(entry.has_value(), GetParam().isGood);
  if (entry) {
    EXPECT_EQ(again(*entry), std::string(GetParam().stage) + " " + text);
  }
}
INSTANTIATE_ROWS(Entry, entryRows);

TEST(Entry, AcceptsARecordNestedAsDeepAsAMessageFile) {
  std::string nested = "1";
  for (int depth = 0; depth < 998; ++depth) nested.insert(0, 1, '[').push_back(']');
  Send send{json("{'guid':'1'}"), 2, "1"};
  send.record["deep"] = jsonAsItIs(nested);
  const std::optional<std::string> text = textOf(send);
  EXPECT_TRUE(parseEntry({"sending", text.value_or("")}));
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
    const unsigned first = spool_.add({"a", "one"}), second = spool_.add({"a", "two"});
    EXPECT_TRUE(spool_.rename(second, "b-1", true));
    EXPECT_EQ(spool_.replace(first, {"c", "three"}), 3u);
    spool_.remove(spool_.add({"a", "gone"}));
  }
  EXPECT_THAT(names(), ElementsAre("2.b-1", "3.c", "reserve"));
  struct stat status;
  stat(folder_.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  stat((folder_ + "/2.b-1").c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);

  Spool next(root_.path);
  const Spool::Pass pass = next.open();
  EXPECT_THAT(pass.numbers, ElementsAre(2, 3));
  EXPECT_EQ(next.read(2).value_or(Spool::Note{}).text, "two");
  EXPECT_EQ(next.read(2).value_or(Spool::Note{}).stage, "b-1");
  EXPECT_EQ(next.add({"a", "four"}), 4u);
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
  writeFile(folder_ + "/7.b", NoteFile::framed("of the same number"));
  const Spool::Pass pass = spool_.open();
  std::vector<std::string> read;
  for (const unsigned number : pass.numbers)
    if (const std::optional<Spool::Note> note = spool_.read(number)) read.push_back(note->text);
  EXPECT_EQ(read.size(), 1u);
  EXPECT_EQ(Spool::survey(root_.path).damaged, 6u);
  EXPECT_EQ(Spool::survey(root_.path).notes.size(), 1u);
  EXPECT_THAT(log_.text(), HasSubstr("[ERROR] Spool file [" + folder_ +
                                     "/5.torn] is damaged: it is set aside as "
                                     "[5.torn.damaged]\n"));
  EXPECT_EQ(spool_.add({"a", "next"}), 8u);
  EXPECT_EQ(readFile(root_.path + "/kept"), "whole");
}

TEST_F(SpoolTest, IsLockedByOneDaemonForOnePass) {
  Spool second(root_.path);
  {
    const Spool::Pass pass = spool_.open();
    for (const std::size_t notes : {0U, 1U}) {
      const Spool::Pass other = second.open();
      EXPECT_EQ(other.numbers.size(), notes);
      second.add({"a", "in memory"});
    }
    second.remove(1);
    second.remove(2);
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
    EXPECT_EQ(spool_.add({"a", "text"}), 1u);
    EXPECT_EQ(spool_.read(1).value_or(Spool::Note{}).text, "text");
    EXPECT_TRUE(spool_.rename(1, "b", false));
  }
  EXPECT_EQ(log_.text(), "[ERROR] Cannot open spool [" + folder_ + "]: [20][Not a directory]\n");
  std::filesystem::remove(folder_);
  writeFile(folder_ + "/1.a", NoteFile::framed("of another daemon"));
  const Spool::Pass pass = spool_.open();
  EXPECT_THAT(pass.numbers, ElementsAre(1, 2));
  EXPECT_EQ(readFile(folder_ + "/1.a"), NoteFile::framed("of another daemon"));
  EXPECT_EQ(readFile(folder_ + "/2.b"), NoteFile::framed("text"));
}

TEST_F(SpoolTest, CreatesARemovedFolderAgain) {
  const Spool::Pass pass = spool_.open();
  spool_.add({"a", "gone with the folder"});
  std::filesystem::remove_all(folder_);
  spool_.add({"a", "kept"});
  EXPECT_THAT(names(), ElementsAre("2.a"));
}
