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
  for (const char* const name : names) {
    const fs::path folder = pathOf(name);
    for (const fs::path& each : {folder.parent_path(), folder})
      if (fs::create_directory(each)) fs::permissions(each, fs::perms::all);  // the daemon's umask is 0
  }
}

std::string MessageFolders::pathOf(const std::string& name) {
  return std::string(root) + (name == "received" ? "/inbox/" : "/outbox/") + name;
}

std::vector<Json::Value> MessageFolders::records(const std::string& name) {
  std::vector<Json::Value> all;
  for (const std::string& file : listFolder(pathOf(name)))
    all.push_back(jsonOrText(readFile(pathOf(name) + "/" + file)));
  return all;
}

// Returns a guid that no message has. A guid consists of the time and a number of two digits.
std::string MessageFolders::freeGuid() const {
  const std::time_t now = clock_.now();
  char second[15];
  std::strftime(second, sizeof second, "%Y%m%d%H%M%S", std::localtime(&now));
  for (unsigned ordinal = 0;; ++ordinal) {
    const std::string guid = second + std::string(ordinal < 10 ? "0" : "") + std::to_string(ordinal);
    const auto hasGuid = [&guid](const char* name) { return fs::exists(pathOf(name) + "/" + guid); };
    if (std::none_of(std::begin(names), std::end(names), hasGuid)) return guid;
  }
}

std::string MessageFolders::queue(const Json::Value& recipient, const std::string& text,
                                  unsigned retries) const {
  create();
  const std::string guid = freeGuid();
  const Json::Value record =
      object({{"guid", guid}, {"recipient", recipient}, {"message", text}, {"retries", retries}});
  // The daemon reads every file in the folder as a complete record, so the file is written outside and moved.
  const std::string target = pathOf("sending") + "/" + guid;
  const std::string beside = fs::path(target).parent_path().parent_path() / guid;
  const bool good = writeFile(beside, toLine(record)) && std::rename(beside.c_str(), target.c_str()) == 0;
  return good ? guid : "";
}
}  // namespace Simulator
