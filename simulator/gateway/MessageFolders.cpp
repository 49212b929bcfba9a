#include "simulator/gateway/MessageFolders.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

namespace fs = std::filesystem;

constexpr fs::perms rootMode = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec;

std::string outbox() { return std::string(MessageFolders::root) + "/outbox/"; }

}  // namespace

MessageFolders::MessageFolders(const GatewayClock& clock) : clock_(clock) {
  fs::create_directories(outbox());
  fs::permissions(root, rootMode);
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

std::string MessageFolders::queue(const Json::Value& recipient, const std::string& text,
                                  unsigned retries) const {
  const std::time_t now = clock_.now();
  char second[15];
  std::strftime(second, sizeof second, "%Y%m%d%H%M%S", std::localtime(&now));
  std::string guid;
  const auto holdsIt = [&guid](const char* box) { return fs::exists(pathOf(box) + "/" + guid); };
  unsigned ordinal = 0;
  do {
    guid = second + std::string(ordinal < 10 ? "0" : "") + std::to_string(ordinal);
    ++ordinal;
  } while (std::any_of(std::begin(boxes), std::end(boxes), holdsIt));
  // The daemon takes any file in the folder for a whole record: it is written beside it and moved in.
  fs::create_directories(pathOf("sending"));
  const std::string beside = outbox() + guid;
  const Json::Value record =
      object({{"guid", guid}, {"recipient", recipient}, {"message", text}, {"retries", retries}});
  const bool good = writeFile(beside, toLine(record)) &&
                    std::rename(beside.c_str(), (pathOf("sending") + "/" + guid).c_str()) == 0;
  return good ? guid : "";
}

}  // namespace Simulator
