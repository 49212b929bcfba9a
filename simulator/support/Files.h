#pragma once

#include <json/value.h>

#include <string>
#include <utility>
#include <vector>

namespace Simulator {

/// The whole content of a file; empty when it cannot be read.
std::string readFile(const std::string& path);
/// Replaces a file by an atomic rename, so that a reader sees the old content or the new one. False when that
/// fails; the old content then stays.
[[nodiscard]] bool writeFile(const std::string& path, const std::string& content);
/// Appends to a file; false when that fails.
bool appendFile(const std::string& path, const std::string& content);
/// The names in a folder, sorted by byte; none when it cannot be read.
std::vector<std::string> listFolder(const std::string& path);

/// A JSON object.
Json::Value object(std::initializer_list<std::pair<const char*, Json::Value>> members);
/// One line of JSON without blanks, in UTF-8.
std::string toLine(const Json::Value& value);
/// Parses strictly. False when `text` is not JSON, or when an object in it repeats a key.
[[nodiscard]] bool readJson(const std::string& text, Json::Value& value);
/// The parsed `text`; a string when it is not JSON.
Json::Value jsonOrText(const std::string& text);

}  // namespace Simulator
