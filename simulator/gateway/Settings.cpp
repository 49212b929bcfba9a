#include "simulator/gateway/Settings.h"

#include <cstdlib>
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

// Returns the object that contains the member at `path`, such as "smsCommands.pingEnabled"; null if there is
// no such object. Sets `key` to the member's name.
Json::Value* find(Json::Value& settings, const std::string& path, std::string& key) {
  Json::Value* place = &settings;
  std::istringstream pieces(path);
  std::getline(pieces, key, '.');
  for (std::string next; std::getline(pieces, next, '.'); key = next) {
    if (!place->isObject() || !place->isMember(key)) return nullptr;
    place = &(*place)[key];
  }
  return place->isObject() ? place : nullptr;
}

Json::Value defaults() {
  Json::Value value;
  if (!readJson(defaultSettings, value)) std::abort();
  return value;
}

bool isSetting(const std::string& path) {
  Json::Value known = defaults();
  std::string key;
  const Json::Value* place = find(known, path, key);
  return place != nullptr && place->isMember(key);
}
}  // namespace

Settings::Settings() : value_(defaults()) {}

Json::Value Settings::value() const {
  const std::lock_guard lock(mutex_);
  return value_;
}

bool Settings::set(const std::string& path, const Json::Value& value) {
  const std::lock_guard lock(mutex_);
  std::string key;
  Json::Value* place = isSetting(path) ? find(value_, path, key) : nullptr;
  if (place != nullptr) (*place)[key] = value;
  return place != nullptr;
}

bool Settings::remove(const std::string& path) {
  const std::lock_guard lock(mutex_);
  std::string key;
  Json::Value* place = find(value_, path, key);
  return place != nullptr && place->removeMember(key, nullptr);
}

bool Settings::setTimings(const std::string& timings) {
  std::filesystem::create_directories(std::filesystem::path(timersFile).parent_path());
  return writeFile(timersFile, "timings-sms=" + timings + "\n");
}
}  // namespace Simulator
