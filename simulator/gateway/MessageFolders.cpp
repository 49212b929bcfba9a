#include "simulator/gateway/MessageFolders.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

namespace fs = std::filesystem;

constexpr fs::perms rootMode = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec;

}  // namespace

MessageFolders::MessageFolders(const GatewayClock& clock) : clock_(clock) {
  fs::create_directories(root);
  fs::permissions(root, rootMode);
}

void MessageFolders::create() {
  for (const char* const box : boxes) {
    const fs::path folder = pathOf(box);
    for (const fs::path& each : {folder.parent_path(), folder})
      if (fs::create_directory(each)) fs::permissions(each, fs::perms::all);  // the daemon's umask is 0
  }
}

std::string MessageFolders::pathOf(const std::string& box) {
  return std::string(root) + (box == "received" ? "/inbox/" : "/outbox/") + box;
}

std::vector<Json::Value> MessageFolders::records(const std::string& box) {
  std::vector<Json::Value> all;
  for (const std::string& name : listFolder(pathOf(box)))
    all.push_back(jsonOrText(readFile(pathOf(box) + "/" + name)));
  return all;
}

// Returns a guid that no message has: the time and an ordinal of two digits.
std::string MessageFolders::freeGuid() const {
  const std::time_t now = clock_.now();
  char second[15];
  std::strftime(second, sizeof second, "%Y%m%d%H%M%S", std::localtime(&now));
  for (unsigned ordinal = 0;; ++ordinal) {
    const std::string guid = second + std::string(ordinal < 10 ? "0" : "") + std::to_string(ordinal);
    const auto holdsIt = [&guid](const char* box) { return fs::exists(pathOf(box) + "/" + guid); };
    if (std::none_of(std::begin(boxes), std::end(boxes), holdsIt)) return guid;
  }
}

std::string MessageFolders::queue(const Json::Value& recipient, const std::string& text,
                                  unsigned retries) const {
  create();
  const std::string guid = freeGuid();
  const Json::Value record =
      object({{"guid", guid}, {"recipient", recipient}, {"message", text}, {"retries", retries}});
  // Writes the file beside the folder, because the daemon takes any file inside for a complete record.
  const std::string target = pathOf("sending") + "/" + guid;
  const std::string beside = fs::path(target).parent_path().parent_path() / guid;
  const bool good = writeFile(beside, toLine(record)) && std::rename(beside.c_str(), target.c_str()) == 0;
  return good ? guid : "";
}

}  // namespace Simulator
