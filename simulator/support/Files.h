#pragma once

#include <json/value.h>

#include <string>
#include <utility>
#include <vector>

namespace Simulator {

/// Returns the content of a file; empty if it cannot be read.
std::string readFile(const std::string& path);
/// Replaces a file by an atomic rename. Returns false and keeps the old content on failure.
[[nodiscard]] bool writeFile(const std::string& path, const std::string& content);
/// Appends to a file; false on failure.
bool appendFile(const std::string& path, const std::string& content);
/// Returns the names in a folder, sorted by byte; none if it cannot be read.
std::vector<std::string> listFolder(const std::string& path);

Json::Value object(std::initializer_list<std::pair<const char*, Json::Value>> members);
/// Returns one line of JSON without blanks, in UTF-8.
std::string toLine(const Json::Value& value);
/// Parses strictly. False if `text` is not JSON, or if an object in it repeats a key.
[[nodiscard]] bool readJson(const std::string& text, Json::Value& value);
/// Parses `text`; returns it as a string if it is not JSON.
Json::Value jsonOrText(const std::string& text);

}  // namespace Simulator
