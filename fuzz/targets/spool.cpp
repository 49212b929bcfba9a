// The input is a note that an earlier daemon may have left in the spool. The first line is the note's stage,
// the rest is its text. The target runs the first pass of the next daemon, which reads the note.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <variant>

#include "daemon/MainLoop.h"
#include "fuzz/shared/Property.h"
#include "storage/MessageRecord.h"
#include "storage/NoteFile.h"

namespace {
class MemoryStorage final : public ICollectionStorage {
 public:
  void save(const Json::Value& record, int /*status*/) override { saved.append(record); }
  void remove(const Json::Value& /*filter*/, int /*status*/) override {}
  Json::Value load(const Json::Value& /*filter*/, int /*status*/) override { return Json::arrayValue; }
  void move(const Json::Value& /*filter*/, int /*from*/, int /*to*/) override {}

  Json::Value saved{Json::arrayValue};
};

class Modem final : public SmsProvider {
 public:
  std::vector<Json::Value> receiveMessages() override {
    wasAsked = true;
    return {};
  }
  bool sendMessage(const Json::Value& /*message*/) override {
    hasSent = true;
    return true;
  }

  bool wasAsked = false, hasSent = false;
};

struct Root {
  Root() { property(mkdtemp(path) != nullptr, "the folder for the spool can be created"); }
  ~Root() { std::filesystem::remove_all(path); }
  char path[32] = "/tmp/veld-fuzz-XXXXXX";
};

Spool::Note noteOfAny(const SpoolEntry& entry) {
  return std::visit([](const auto& kind) { return noteOf(kind).value_or(Spool::Note{}); }, entry);
}

// Returns the number of records that a pass must save.
std::size_t unfiled(const SpoolEntry& entry) {
  const auto* const batch = std::get_if<Batch>(&entry);
  return batch != nullptr ? batch->records.size() : 1;
}

bool isFileName(const std::string& stage) {
  return stage.size() < 200 && stage.find('/') == std::string::npos && stage.find('\0') == std::string::npos;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(data, data + size);
  const std::size_t lineEnd = std::min(input.find('\n'), input.size());
  const Spool::Note note{input.substr(0, lineEnd), input.substr(std::min(lineEnd + 1, input.size()))};
  const std::optional<SpoolEntry> entry = entryOf(note);
  if (entry) {
    const Spool::Note again = noteOfAny(*entry);
    const std::optional<SpoolEntry> second = entryOf(again);
    property(again.stage == note.stage, "an entry keeps the stage of its note");
    property(second && noteOfAny(*second).text == again.text,
             "an entry is the same after it is written to a note and read again");
  }
  const std::optional<std::string> text = NoteFile::unframed(input);
  property(!text || NoteFile::framed(*text) == input,
           "writing the text of a note file again gives the same file");

  if (!isFileName(note.stage)) return 0;
  static const Root root;
  const std::string spool = std::string(root.path) + "/spool";
  std::filesystem::remove_all(spool);
  std::filesystem::create_directory(spool);
  std::ofstream(spool + "/reserve") << '-';
  std::ofstream(spool + "/1." + note.stage) << NoteFile::framed(note.text);
  MemoryStorage store;
  const StorageFaults none;
  CheckedStorage storage(store, none);
  Modem modem;
  SMSCommand commands(Json::nullValue);
  RetryState retry;
  InTransit inTransit(root.path, root.path);
  runPass(modem, storage, commands, inTransit, {}, retry);
  property(modem.wasAsked, "the pass lists messages, whatever the note contains");
  property(!modem.hasSent, "the pass sends no message, whatever the note contains");
  property(store.saved.size() == (entry ? unfiled(*entry) : 0), "each unfiled record is filed once");
  return 0;
}
