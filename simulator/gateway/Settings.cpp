#include "simulator/gateway/Settings.h"

#include <filesystem>
#include <sstream>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

constexpr char defaultSettings[] = R"({
  "enabled": true, "sentLimit": 100, "receivedLimit": 100,
  "smsCommands": {
    "enabled": true,
    "whitelist": {"enabled": true, "numbers": ["+4917012345"]},
    "password": {"enabled": true, "text": "secret"},
    "checkinEnabled": true, "rebootEnabled": true, "rmEnabled": true, "setCellularEnabled": true,
    "apnEnabled": true, "cellularStatusEnabled": true, "radioEnabled": true, "ethernetEnabled": true,
    "wanStatusEnabled": true, "wanIpsEnabled": true, "wifiEnabled": true, "pingEnabled": true,
    "serialEnabled": true, "geopositionEnabled": true, "lnsRestartEnabled": true}})";

std::vector<std::string> split(const std::string& path) {
  std::vector<std::string> keys;
  std::istringstream pieces(path);
  for (std::string key; std::getline(pieces, key, '.');) keys.push_back(key);
  return keys;
}

}  // namespace

Settings::Settings() { [[maybe_unused]] const bool good = readJson(defaultSettings, value_); }

Json::Value Settings::value() const {
  const std::lock_guard lock(mutex_);
  return value_;
}

// The object that holds the last key of the path; null when something on the way is none.
Json::Value* Settings::find(const std::vector<std::string>& path) {
  Json::Value* place = &value_;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    if (!place->isObject() || !place->isMember(path[i])) return nullptr;
    place = &(*place)[path[i]];
  }
  return place->isObject() ? place : nullptr;
}

bool Settings::set(const std::string& path, const Json::Value& value) {
  const std::lock_guard lock(mutex_);
  const std::vector<std::string> keys = split(path);
  Json::Value* place = find(keys);
  if (place == nullptr || keys.empty()) return false;
  (*place)[keys.back()] = value;
  return true;
}

bool Settings::remove(const std::string& path) {
  const std::lock_guard lock(mutex_);
  const std::vector<std::string> keys = split(path);
  Json::Value* place = find(keys);
  if (place == nullptr || keys.empty() || !place->isMember(keys.back())) return false;
  place->removeMember(keys.back());
  return true;
}

bool Settings::setTimings(const std::string& timings) {
  std::filesystem::create_directories(std::filesystem::path(timersFile).parent_path());
  return writeFile(timersFile, "timings-sms=" + timings + "\n");
}

}  // namespace Simulator
