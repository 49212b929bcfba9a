#include "storage/FolderStorage.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

#include "storage/FileContent.h"
#include "storage/MessageRecord.h"
#include "support/Logger.h"

namespace {
void logRemoveFailure(const std::string& file) {
  ORVEL_LOG(ERROR, "Cannot remove file %s: [%d][%s]", file.c_str(), errno, std::strerror(errno));
}

// Looks `name` up in the working directory ("/" in the daemon), not in the storage's folder. It thus excludes
// "." and "..", and little else.
bool isDirectory(const char* name) {
  struct stat status;
  return stat(name, &status) == 0 && S_ISDIR(status.st_mode);
}

bool matches(const Json::Value& record, const Json::Value& filter) {
  if (filter.isNull()) return true;
  if (!filter.isObject()) return false;
  for (const std::string& key : filter.getMemberNames())  // a key may hold a NUL
    if (!record.isObject() || !record.isMember(key) || record[key] != filter[key]) return false;
  return true;
}
}  // namespace

FolderStorage::FolderStorage(const std::string& path, StorageFaults* faults) : path(path), faults_(faults) {
  if (std::system(("mkdir -p " + path).c_str()) != 0)
    ORVEL_LOG(ERROR, "Cannot create path [%s]: [%d][%s]", path.c_str(), errno, std::strerror(errno));
}

bool FolderStorage::save(const Json::Value& record) {
  if (!MessageRecord::has(record, MessageRecord::Key::Guid)) return false;
  const std::string file = path + "/" + record[MessageRecord::Key::Guid].asString();
  std::ofstream stream(file);
  if (!stream.is_open()) return true;
  stream << record;
  stream.close();
  if (stream) return true;
  ORVEL_LOG(ERROR, "Cannot write file %s: [%d][%s]", file.c_str(), errno, std::strerror(errno));
  return false;
}

bool FolderStorage::remove(const Json::Value& filter) {
  if (filter.isNull()) {
    if (std::system(("rm " + path + "/" + "*").c_str()) == 0) return true;
    logRemoveFailure(path + "/");
    return false;
  }
  if (!MessageRecord::has(filter, MessageRecord::Key::Guid)) return false;
  const std::string file = path + "/" + filter[MessageRecord::Key::Guid].asString();
  if (std::remove(file.c_str()) == 0) return true;
  logRemoveFailure(file);
  return false;
}

Json::Value FolderStorage::load(const Json::Value& filter) {
  Json::Value records(Json::arrayValue);
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
  if (directory == nullptr) {
    if (errno != ENOENT) countFailedRead();
    return records;
  }
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(directory.get());
    if (entry == nullptr) break;
    if (isDirectory(entry->d_name)) continue;
    Json::Value record;
    if (read(entry->d_name, record) && matches(record, filter)) records.append(std::move(record));
  }
  if (errno != 0) countFailedRead();
  return records;
}

void FolderStorage::countFailedRead() {
  if (faults_ != nullptr) ++faults_->failedReads;
}

bool FolderStorage::read(const char* name, Json::Value& record) {
  const FileContent content = FileContent::read(path + "/" + name);
  const bool isMissed = content.openError != 0 && content.openError != ENOENT && content.openError != ENXIO;
  if (isMissed || content.readError == EIO || content.readError == ENOMEM) countFailedRead();
  if (content.openError != 0) {
    ORVEL_LOG(ERROR, "Cannot open file %s: [%d][%s]", name, content.openError,
              std::strerror(content.openError));
    return false;
  }
  std::string errors;
  if (MessageRecord::parse(content.text, record, &errors)) return true;
  ORVEL_LOG(ERROR, "Cannot parse JSON from file %s: [%s]", name, errors.c_str());
  return false;
}
