#pragma once

#include <json/value.h>

#include <string>
#include <utility>
#include <vector>

namespace Simulator {
/// Returns the content of a file; an empty string if the file cannot be read.
std::string readFile(const std::string& path);
/// Replaces the content of a file by an atomic rename. On failure, keeps the old content and returns false.
[[nodiscard]] bool writeFile(const std::string& path, const std::string& content);
/// Appends `content` to a file. Returns false on failure.
bool appendFile(const std::string& path, const std::string& content);
/// Returns the names in a folder, sorted by byte values; no names if the folder cannot be read.
std::vector<std::string> listFolder(const std::string& path);

Json::Value object(std::initializer_list<std::pair<const char*, Json::Value>> members);
/// Returns `value` as one line of JSON in UTF-8, without blanks between the values.
std::string toLine(const Json::Value& value);
/// Parses `text` into `value`. Returns false if `text` is not one JSON value, or if an object repeats a key.
[[nodiscard]] bool readJson(const std::string& text, Json::Value& value);
/// Parses `text` and returns the JSON value. If `text` is not JSON, returns `text` as a JSON string.
Json::Value jsonOrText(const std::string& text);
}  // namespace Simulator
