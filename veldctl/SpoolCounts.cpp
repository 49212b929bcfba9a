#include "veldctl/SpoolCounts.h"

#include <cerrno>
#include <filesystem>
#include <optional>

#include "storage/MessageStatus.h"
#include "storage/NoteFile.h"
#include "storage/SpoolEntry.h"
#include "veldctl/Message.h"

namespace {
std::time_t timeOf(const Json::Value& record) {
  Message message;
  message.status = MessageStatus::Received;
  message.record = record;
  return message.time();
}

// Adds one entry of the spool to the counts.
struct Count {
  SpoolCounts& found;

  void operator()(const Batch& batch) const {
    if (found.since == 0) found.since = timeOf(batch.records.front());
    found.received += static_cast<std::int64_t>(batch.records.size());
  }
  void operator()(const Send& send) const {
    ++(send.stage == Send::Stage::Begun ? found.begun : found.answered);
  }
};

void countNote(SpoolCounts& found, const std::string& path, const std::string& name) {
  const std::optional<std::string> text = NoteFile::read(path);
  if (!text && errno != EBADMSG) {
    if (errno != ENOENT) found.isReadable = false;
    return;
  }
  const std::optional<SpoolEntry> entry = entryOf({NoteFile::stageOf(name), text.value_or("")});
  if (entry)
    std::visit(Count{found}, *entry);
  else
    ++found.damaged;
}
}  // namespace

SpoolCounts readSpool(const std::string& root) {
  SpoolCounts found;
  std::error_code error;
  std::filesystem::directory_iterator file(NoteFile::folderBelow(root), error);
  for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
    const std::string name = file->path().filename();
    const NoteFile::Kind kind = NoteFile::kindOf(name);
    if (kind == NoteFile::Kind::Note) countNote(found, file->path(), name);
    if (kind == NoteFile::Kind::SetAside || kind == NoteFile::Kind::Foreign) ++found.damaged;
  }
  if (error && error != std::errc::no_such_file_or_directory) found.isReadable = false;
  return found;
}
