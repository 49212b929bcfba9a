#include "storage/MoveFolderStorage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "storage/FileContent.h"
#include "storage/MessageRecord.h"
#include "support/FileDescriptor.h"
#include "support/Logger.h"

namespace {
using Orvel::FileDescriptor;

// Removes the staged file of an earlier save, so that it is never moved instead of this one. Preserves errno,
// which is logged if the move fails: a missing file is no fault.
void removeLeftover(const std::string& staged) {
  const int before = errno;
  unlink(staged.c_str());
  errno = before;
}

// mv hides its errno: repeats the write to an unnamed file to learn it. 0 when that succeeds, or when the
// file system has no unnamed files.
int reasonOfFailedMove(const std::string& staged, const std::string& folder) {
  if (access(staged.c_str(), R_OK) != 0) return errno;
  const std::string content = FileContent::read(staged).text;
  const FileDescriptor file(open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.isOpen()) return errno != EOPNOTSUPP && errno != EISDIR ? errno : 0;
  errno = ENOSPC;
  const ssize_t written = write(file.get(), content.data(), content.size());
  return written == static_cast<ssize_t>(content.size()) ? 0 : errno;
}

// Whether `file` holds `record` although mv has failed. Removes a torn file.
bool isMoved(const Json::Value& record, const std::string& file) {
  if (MessageRecord::isInFile(record, file)) return true;
  const FileContent content = FileContent::read(file);
  const bool isRead = content.openError == 0 && content.readError == 0;
  Json::Value found;
  if (isRead && !MessageRecord::parse(content.text, found)) unlink(file.c_str());
  return false;
}
}  // namespace

MoveFolderStorage::MoveFolderStorage(const std::string& path, const std::string& tempPath,
                                     StorageFaults* faults)
    : FolderStorage(path, faults), tempFolder(tempPath) {}

bool MoveFolderStorage::save(const Json::Value& record) {
  if (!MessageRecord::has(record, MessageRecord::Key::Guid)) return false;
  const std::string guid = record[MessageRecord::Key::Guid].asString();
  const std::string staged = tempFolder.path + "/" + guid;
  removeLeftover(staged);
  if (!tempFolder.save(record)) {
    unlink(staged.c_str());
    return false;
  }
  const int status = std::system(("mv " + staged + " " + path + "/").c_str());
  if (status == 0) return true;
  const int error = errno;
  ORVEL_LOG(ERROR, "Error %d: %s", error, std::strerror(error));
  const int reason = status == -1 ? error : reasonOfFailedMove(staged, path);
  if (reason != 0)
    ORVEL_LOG(ERROR, "Cannot move %s to %s: [%d][%s]", staged.c_str(), path.c_str(), reason,
              std::strerror(reason));
  return isMoved(record, path + "/" + guid) && access(staged.c_str(), F_OK) != 0;
}
