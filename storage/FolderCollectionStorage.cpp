#include "storage/FolderCollectionStorage.h"

#include "storage/MessageStatus.h"
#include "storage/MoveFolderStorage.h"

FolderCollectionStorage::FolderCollectionStorage(const std::string& root, const std::string& tempPath) {
  for (const int status : MessageStatus::all)
    folders[status] =
        std::make_shared<MoveFolderStorage>(root + MessageStatus::folder(status), tempPath, &faults_);
}

void FolderCollectionStorage::save(const Json::Value& record, int status) {
  IStorage* const storage = folder(status);
  if (storage != nullptr && !storage->save(record)) ++faults_.failedSaves;
}

void FolderCollectionStorage::remove(const Json::Value& filter, int status) {
  if (IStorage* const storage = folder(status)) storage->remove(filter);
}

Json::Value FolderCollectionStorage::load(const Json::Value& filter, int status) {
  IStorage* const storage = folder(status);
  return storage != nullptr ? storage->load(filter) : Json::Value();
}

void FolderCollectionStorage::move(const Json::Value& filter, int from, int /*to*/) { load(filter, from); }

IStorage* FolderCollectionStorage::folder(int status) const {
  const auto found = folders.find(status);
  return found != folders.end() ? found->second.get() : nullptr;
}
