// Compares the message store with a bare loop of the same library calls and shell commands.

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "bench/Bench.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/FolderStorage.h"
#include "storage/MessageStatus.h"
#include "storage/MessageStore.h"

namespace {
Json::Value bareLoad(const std::string& path) {
  Json::Value records(Json::arrayValue);
  DIR* const directory = opendir(path.c_str());
  const Json::CharReaderBuilder reader;
  while (const dirent* entry = readdir(directory)) {
    struct stat status;
    if (stat(entry->d_name, &status) == 0 && S_ISDIR(status.st_mode)) continue;
    std::ifstream stream(path + "/" + entry->d_name);
    Json::Value record;
    std::string errors;
    Json::parseFromStream(reader, stream, &record, &errors);
    records.append(std::move(record));
  }
  closedir(directory);
  return records;
}

void bareSave(const Json::Value& record) {
  std::vector<std::string> guids;
  for (const Json::Value& kept : bareLoad(inboxFolder)) guids.push_back(kept["guid"].asString());
  std::sort(guids.begin(), guids.end());
  std::remove((std::string(inboxFolder) + "/" + guids[0]).c_str());
  const std::string staged = std::string(stagingFolder) + "/" + record["guid"].asString();
  std::ofstream(staged) << record;
  if (std::system(("mv " + staged + " " + inboxFolder + "/").c_str()) != 0) std::abort();
}

void loadFolder(benchmark::State& state) {
  fillInbox(static_cast<unsigned>(state.range(0)));
  FolderStorage folder(inboxFolder);
  runBesideFloor(
      state, [&] { benchmark::DoNotOptimize(folder.load(Json::nullValue)); },
      [&] { benchmark::DoNotOptimize(bareLoad(inboxFolder)); });
}
BENCHMARK(loadFolder)->Arg(1000)->UseManualTime()->MinTime(4)->Unit(benchmark::kMillisecond);

void saveUnderALimit(benchmark::State& state) {
  const auto kept = static_cast<unsigned>(state.range(0));
  fillInbox(kept);
  auto folders = std::make_shared<FolderCollectionStorage>(storeFolder, stagingFolder);
  const auto storage = makeMessageStore(folders, kept, kept);
  unsigned number = kept;
  runBesideFloor(
      state, [&] { storage->save(recordOf(number++), MessageStatus::Received); },
      [&] { bareSave(recordOf(number++)); });
}
BENCHMARK(saveUnderALimit)->Arg(1000)->UseManualTime()->MinTime(4)->Unit(benchmark::kMillisecond);
}  // namespace
