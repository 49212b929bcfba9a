#include "storage/Journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"

namespace {

constexpr char journalName[] = "/journal";
constexpr char unfinished[] = ".new";
constexpr char setAside[] = ".unreadable";

namespace Key {
constexpr char id[] = "id";
constexpr char record[] = "record";
constexpr char from[] = "from";
constexpr char to[] = "to";
constexpr char filed[] = "filed";
constexpr char tried[] = "tried";
constexpr char file[] = "file";
}  // namespace Key

std::string toLine(const Json::Value& changes) {
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  writer["commentStyle"] = "None";  // a comment in a queued file would break the line
  return Json::writeString(writer, changes) + "\n";
}

Json::Value changeOf(unsigned id) {
  Json::Value change(Json::objectValue);
  change[Key::id] = id;
  return change;
}

Json::Value changeOf(unsigned id, const Journal::Entry& entry) {
  Json::Value change = changeOf(id);
  change[Key::record] = entry.record;
  change[Key::from] = entry.from;
  change[Key::to] = entry.to;
  change[Key::filed] = entry.filed;
  change[Key::tried] = entry.tried;
  change[Key::file] = entry.file;
  return change;
}

// Guids go into shell commands as they are: a record that no command could file is not waited for.
bool isFileName(const std::string& guid) {
  return !guid.empty() && guid != "." && guid != ".." && std::all_of(guid.begin(), guid.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::strchr("._-+:@,=%", c) != nullptr;
  });
}

bool isStatus(const Json::Value& value) {
  return value.isInt() && value.asInt() >= 0 && value.asInt() <= MessageStatus::Failed;
}

bool isChange(const Json::Value& change) {
  return change.isObject() && change[Key::id].isUInt() &&
         (!change.isMember(Key::record) || isFileName(MessageRecord::guid(change[Key::record]))) &&
         isStatus(change.get(Key::from, 0)) && isStatus(change.get(Key::to, 0)) &&
         change.get(Key::filed, false).isBool() && change.get(Key::tried, false).isBool() &&
         change.get(Key::file, "").isString();
}

// A change sets the members that it has; one without any takes the entry out.
void applyChange(std::map<unsigned, Journal::Entry>& entries, const Json::Value& change) {
  const unsigned id = change[Key::id].asUInt();
  if (change.size() == 1) {
    entries.erase(id);
    return;
  }
  Journal::Entry& entry = entries[id];
  entry.record = change.get(Key::record, entry.record);
  entry.from = change.get(Key::from, entry.from).asInt();
  entry.to = change.get(Key::to, entry.to).asInt();
  entry.filed = change.get(Key::filed, entry.filed).asBool();
  entry.tried = change.get(Key::tried, entry.tried).asBool();
  entry.file = change.get(Key::file, entry.file).asString();
}

bool readLine(const std::string& line, Json::Value& changes) {
  std::istringstream stream(line);
  std::string errors;
  return MessageRecord::parse(stream, changes, errors) && changes.isArray() &&
         std::all_of(changes.begin(), changes.end(), isChange);
}

// Whether the file holds a whole record.
bool readRecord(const std::string& file, Json::Value& record) {
  std::ifstream stream(file);
  std::string errors;
  return stream.is_open() && MessageRecord::parse(stream, record, errors);
}

// The same message, whatever its status and whether it was obeyed.
bool isSame(Json::Value a, Json::Value b) {
  for (Json::Value* const record : {&a, &b}) {
    if (!record->isObject()) return false;
    record->removeMember(MessageRecord::Key::Status);
    record->removeMember(MessageRecord::Key::IsSMSCommand);
  }
  return a == b;
}

// A file that is replaced by another of the same name and content is another one.
std::string identityOf(const std::string& file) {
  struct stat status;
  if (stat(file.c_str(), &status) != 0) return "";
  std::ostringstream text;
  text << status.st_ino << ' ' << status.st_mtim.tv_sec << ' ' << status.st_mtim.tv_nsec;
  return text.str();
}

// What is to be filed after a send. Only a retry costs one.
void answer(Journal::Entry& entry, bool sent) {
  entry.to = sent ? MessageStatus::Sent : MessageStatus::Failed;
  entry.record[MessageRecord::Key::Status] = MessageStatus::text(entry.to);
  if (!sent && entry.from == MessageStatus::Failed)
    entry.record[MessageRecord::Key::Retries] = MessageRecord::retriesAfterFailure(entry.record);
}

bool writeWhole(int file, const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t size = write(file, text.data() + written, text.size() - written);
    if (size < 0) return false;
    written += static_cast<std::size_t>(size);
  }
  return true;
}

}  // namespace

Journal::Journal(const std::string& root, std::uint32_t receivedLimit, std::uint32_t sentLimit)
    : root_(root), path_(root + journalName), receivedLimit_(receivedLimit), sentLimit_(sentLimit) {}

Journal::~Journal() {
  if (file_ >= 0) close(file_);
  if (directory_ >= 0) close(directory_);
}

Journal::Reading Journal::read(const std::string& root, std::vector<Entry>& entries) {
  std::ifstream stream(root + journalName);
  if (!stream.is_open()) return errno == ENOENT ? Reading::Whole : Reading::Failed;
  Entries read;
  bool good = true;
  std::string line;
  Json::Value changes;
  while (good && std::getline(stream, line) && !stream.eof()) {  // a line without an end is cut short
    good = readLine(line, changes);
    for (Json::ArrayIndex i = 0; good && i < changes.size(); ++i) applyChange(read, changes[i]);
  }
  if (stream.bad()) return Reading::Failed;
  for (auto& [id, entry] : read)
    if (entry.record.isObject()) entries.push_back(std::move(entry));
  return good ? Reading::Whole : Reading::Torn;
}

bool Journal::isTaken(const std::string& guid) const {
  const std::string file = fileOf(MessageStatus::Received, guid);
  struct stat status;
  for (int tries = 0; tries < 2;
       ++tries) {  // it may fail for a moment: a file that is there must not be replaced
    if (lstat(file.c_str(), &status) == 0) return true;
    if (errno == ENOENT) break;
  }
  return isOnItsWay(guid);
}

bool Journal::isOnItsWay(const std::string& guid) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const auto& each) {
    return each.second.to == MessageStatus::Received && MessageRecord::guid(each.second.record) == guid;
  });
}

void Journal::received(const std::vector<Json::Value>& records) { merged({}, records); }

void Journal::merged(const std::vector<std::string>& parts, const std::vector<Json::Value>& records) {
  if (records.empty() || !keeps(MessageStatus::Received)) return;
  Json::Value changes(Json::arrayValue);
  for (const std::string& part : parts) {
    const auto found = findUnfiled(part, MessageStatus::Received);
    if (found != entries_.end()) changes.append(changeOf(found->first));
  }
  for (const Json::Value& record : records) {
    const auto replaced = findUnfiled(MessageRecord::guid(record), MessageStatus::Received);
    if (replaced != entries_.end()) changes.append(changeOf(replaced->first));
    Entry entry;
    entry.record = record;
    entry.from = parts.empty() ? 0 : MessageStatus::Received;
    entry.to = MessageStatus::Received;
    changes.append(changeOf(nextId_++, entry));
  }
  noteAll(changes, true);
}

Json::Value Journal::withUnfiled(Json::Value stored) {
  for (Json::Value& record : stored) {
    const auto found = findUnfiled(MessageRecord::guid(record), MessageStatus::Received);
    if (found != entries_.end()) record = found->second.record;
  }
  return stored;
}

void Journal::prepare(const Json::Value& record, int from) {
  dropAttempt();
  const std::string guid = MessageRecord::guid(record);
  Json::Value lying;
  if (!isFileName(guid) || !readRecord(fileOf(from, guid), lying) || !isSame(lying, record)) return;
  attempt_ = Entry{record, from, 0, false, false, identityOf(fileOf(from, guid))};
}

void Journal::begun() {
  if (!attempt_) return;
  attemptId_ = nextId_++;
  note(changeOf(attemptId_, *attempt_), false);
}

void Journal::answered(bool sent) {
  if (!attempt_) return;
  if (!liesUnderFrom(*attempt_)) return dropAttempt();  // taken away meanwhile: it is not filed again
  if (attemptId_ == 0) attemptId_ = nextId_++;
  answer(*attempt_, sent);
  note(changeOf(attemptId_, *attempt_), true);
  attempt_.reset();
  attemptId_ = 0;
}

bool Journal::isAnswered(const Json::Value& record, int from) const {
  const std::string guid = MessageRecord::guid(record);
  return std::any_of(entries_.begin(), entries_.end(), [&](const auto& each) {
    const Entry& entry = each.second;
    return entry.from == from && entry.to != 0 && MessageRecord::guid(entry.record) == guid &&
           liesUnderFrom(entry);
  });
}

bool Journal::isBehind(const Json::Value& record) const {
  return behind_.count(MessageRecord::guid(record)) != 0;
}

void Journal::saved(const Json::Value& record, int status, bool good) {
  const auto found = findUnfiled(MessageRecord::guid(record), status);
  if (found == entries_.end()) return;
  storeFails_ = !good;
  Json::Value change = changeOf(found->first);
  if (good) {
    change[Key::filed] = true;
  } else {
    change[Key::record] = record;
    change[Key::tried] = true;
  }
  note(change, false);
}

void Journal::catchUp(ICollectionStorage& storage) {
  acquire();
  for (const auto& [id, entry] : entries_) {
    if (entry.to == MessageStatus::Received || isDone(entry)) continue;
    Json::Value filter;
    filter[MessageRecord::Key::Guid] = MessageRecord::guid(entry.record);
    if (liesUnderFrom(entry)) storage.remove(filter, entry.from);
    if (entry.filed || !keeps(entry.to)) continue;
    storage.save(Json::Value(entry.record), entry.to);
    if (storeFails_) break;
  }
}

std::vector<Json::Value> Journal::left() const {
  std::vector<Json::Value> records;
  for (const auto& [id, entry] : entries_) {
    if (entry.to != MessageStatus::Received || isDone(entry)) continue;
    records.push_back(entry.record);
    if (storeFails_) break;
  }
  return records;
}

bool Journal::wasTried(const Json::Value& record) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const auto& each) {
    return each.second.tried && MessageRecord::guid(each.second.record) == MessageRecord::guid(record);
  });
}

void Journal::settle() {
  dropAttempt();
  std::vector<unsigned> done;
  for (const auto& [id, entry] : entries_)
    if (isDone(entry)) done.push_back(id);
  if (!done.empty()) {
    if (directory_ >= 0 && syncfs(directory_) != 0) return complain("write");
    for (const unsigned id : done) entries_.erase(id);
    if (!entries_.empty() && acquire()) rewrite(true);
  }
  if (entries_.empty() && exists_) removeFile();
}

bool Journal::keeps(int status) const {
  return (status == MessageStatus::Received ? receivedLimit_ : sentLimit_) != 0;
}

bool Journal::isDone(const Entry& entry) const {
  if (entry.to == 0 || (!entry.filed && keeps(entry.to))) return false;
  return entry.from == 0 || entry.from == entry.to || !liesUnderFrom(entry);
}

bool Journal::liesUnderFrom(const Entry& entry) const {
  return !entry.file.empty() &&
         entry.file == identityOf(fileOf(entry.from, MessageRecord::guid(entry.record)));
}

std::string Journal::fileOf(int status, const std::string& guid) const {
  return root_ + MessageStatus::folder(status) + "/" + guid;
}

Journal::Entries::iterator Journal::findUnfiled(const std::string& guid, int to) {
  return std::find_if(entries_.begin(), entries_.end(), [&](const auto& each) {
    return each.second.to == to && !each.second.filed && MessageRecord::guid(each.second.record) == guid;
  });
}

// A send that has no answer was broken off by an exception, before the modem was asked, or its answer is of
// no use.
void Journal::dropAttempt() {
  if (attemptId_ != 0) note(changeOf(attemptId_), false);
  attempt_.reset();
  attemptId_ = 0;
}

// An entry of an earlier daemon: its send, if it was not answered, has failed; its file may be there, or be
// torn.
void Journal::adopt(Entry entry) {
  const std::string guid = MessageRecord::guid(entry.record);
  if (entry.to == 0) {
    ORVEL_LOG(WARNING, "Sending message %s was begun and never answered: it counts as failed", guid.c_str());
    behind_.insert(guid);
    answer(entry, false);
  }
  const std::string file = fileOf(entry.to, guid);
  Json::Value lying;
  const bool whole = readRecord(file, lying), isFiled = whole && isSame(lying, entry.record);
  if (!entry.filed && entry.from == 0 &&
      (whole ? !isFiled : isOnItsWay(guid)))  // another message came while the journal could not be read
    entry.record[MessageRecord::Key::Guid] = freeGuid(guid);
  entry.filed = entry.filed ? whole || (access(file.c_str(), F_OK) != 0 && errno == ENOENT) : isFiled;
  entries_[nextId_++] = std::move(entry);
}

std::string Journal::freeGuid(const std::string& guid) const {
  std::string free;
  unsigned ordinal = 0;
  do free = guid + std::to_string(ordinal++);
  while (isTaken(free));
  return free;
}

bool Journal::acquire() {
  if (owned_) return true;
  if (directory_ < 0) directory_ = open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory_ < 0) return complain("open"), false;
  if (flock(directory_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) return complain("lock"), false;
    if (!complained_) ORVEL_LOG(ERROR, "Journal [%s] belongs to another daemon", path_.c_str());
    complained_ = true;
    return false;
  }
  owned_ = load();
  return owned_;
}

bool Journal::load() {
  std::vector<Entry> entries;
  const Reading reading = read(root_, entries);
  if (reading == Reading::Failed) return complain("read"), false;
  complained_ = false;
  std::remove((path_ + unfinished).c_str());
  exists_ = access(path_.c_str(), F_OK) == 0;
  if (reading == Reading::Torn) {
    const std::string aside = path_ + setAside;
    ORVEL_LOG(ERROR, "Journal [%s] is torn: it is set aside as [%s]", path_.c_str(), aside.c_str());
    exists_ = std::rename(path_.c_str(), aside.c_str()) != 0;
  }
  for (Entry& entry : entries) adopt(std::move(entry));
  if (!entries_.empty()) rewrite(true);
  return true;
}

void Journal::note(const Json::Value& change, bool flushed) {
  Json::Value changes(Json::arrayValue);
  changes.append(change);
  noteAll(changes, flushed);
}

void Journal::noteAll(const Json::Value& changes, bool flushed) {
  for (const Json::Value& change : changes) applyChange(entries_, change);
  if (!acquire() || append(changes, flushed) || rewrite(flushed)) return;
  struct stat status;
  if (fstat(directory_, &status) != 0 || status.st_nlink != 0) return;
  close(std::exchange(directory_, -1));  // the folder was removed: another may have come in its place
  owned_ = exists_ = false;
}

bool Journal::append(const Json::Value& changes, bool flushed) {
  if (file_ < 0 || !writeWhole(file_, toLine(changes))) return false;
  if (!flushed) return true;
  if (fsync(file_) != 0) return false;
  named_ = named_ || fsync(directory_) == 0;
  return named_;
}

// A file that is there may be on the disk: one that takes its place must be, too.
bool Journal::rewrite(bool flushed) {
  flushed = flushed || exists_;
  if (file_ >= 0) close(std::exchange(file_, -1));
  Json::Value all(Json::arrayValue);
  for (const auto& [id, entry] : entries_) all.append(changeOf(id, entry));
  const std::string aside = path_ + unfinished;
  const int file = open(aside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
  if (file < 0) return complain("write"), false;
  if (!writeWhole(file, toLine(all)) || (flushed && fsync(file) != 0) ||
      std::rename(aside.c_str(), path_.c_str()) != 0) {
    complain("write");
    close(file);
    std::remove(aside.c_str());
    return false;
  }
  exists_ = true;
  file_ = file;
  named_ = flushed && fsync(directory_) == 0;
  if (flushed && !named_) return complain("write"), true;
  complained_ = false;
  return true;
}

void Journal::removeFile() {
  if (file_ >= 0) close(std::exchange(file_, -1));
  if (std::remove(path_.c_str()) == 0 || errno == ENOENT)
    exists_ = false;
  else
    complain("write");
}

void Journal::complain(const char* what) {
  if (!complained_)
    ORVEL_LOG(ERROR, "Cannot %s journal [%s]: [%d][%s]", what, path_.c_str(), errno, std::strerror(errno));
  complained_ = true;
}
