#include "storage/MoveFolderStorage.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "storage/MessageRecord.h"
#include "support/Logger.h"

MoveFolderStorage::MoveFolderStorage(const std::string& path, const std::string& tempPath)
    : FolderStorage(path), tempFolder(tempPath) {}

bool MoveFolderStorage::save(const Json::Value& record) {
  if (!tempFolder.save(record)) return false;
  const std::string guid = record[MessageRecord::Key::Guid].asString();
  if (std::system(("mv " + tempFolder.path + "/" + guid + " " + path + "/").c_str()) != 0) {
    ORVEL_LOG(ERROR, "Error %d: %s", errno, std::strerror(errno));
    return false;
  }
  return true;
}
