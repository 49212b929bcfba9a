#include "proof/Shelf.h"

#include <sys/stat.h>

#include <algorithm>

#include "simulator/gateway/MessageFolders.h"
#include "simulator/support/Files.h"

namespace {

using Simulator::MessageFolders;

// Changes whenever the file is written or replaced.
std::string versionOf(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return "";
  return std::to_string(status.st_ino) + "/" + std::to_string(status.st_size) + "/" +
         std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
}

}  // namespace

std::string Shelf::pathOf(const std::string& place) {
  return MessageFolders::pathOf(boxOf(place)) + "/" + nameOf(place);
}

Shelf::Changes Shelf::look() {
  Versions now;
  for (const std::string& box : boxes_) {
    const std::string folder = MessageFolders::pathOf(box) + "/";
    for (const std::string& name : Simulator::listFolder(folder))
      now[std::string(box).append("/").append(name)] = versionOf(folder + name);
  }
  Changes changes{{}, {}, {}, limit_};
  const auto isIn = [](const Versions& versions, const auto& file) {
    const auto found = versions.find(file.first);
    return found != versions.end() && found->second == file.second;
  };
  for (const auto& file : versions_)
    if (!isIn(now, file)) changes.gone.push_back(file.first);
  for (const auto& file : now)
    if (!isIn(versions_, file)) changes.came.push_back(file.first);
  for (const auto& [place, version] : versions_) changes.before.insert(nameOf(place));
  versions_ = std::move(now);
  return changes;
}

std::set<std::string> Shelf::Changes::displaced(std::size_t more) const {
  const std::size_t wanted = before.size() + came.size() + more;
  const std::size_t over = std::min(before.size(), wanted - std::min(wanted, limit));
  return {before.begin(), std::next(before.begin(), static_cast<std::ptrdiff_t>(over))};
}
