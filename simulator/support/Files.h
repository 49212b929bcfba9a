#pragma once

#include <json/value.h>

#include <string>
#include <utility>
#include <vector>

namespace Simulator {

/// The whole content of a file; empty when it cannot be read.
std::string readFile(const std::string& path);
/// Writes a file anew, under another name first: who reads it sees the old content or the new one. False, and
/// nothing is left, when that fails.
[[nodiscard]] bool writeFile(const std::string& path, const std::string& content);
/// Adds to a file; false when that fails.
bool appendFile(const std::string& path, const std::string& content);
/// The names of what lies in a folder, sorted bytewise; none when it cannot be read.
std::vector<std::string> listFolder(const std::string& path);

/// A JSON object.
Json::Value object(std::initializer_list<std::pair<const char*, Json::Value>> members);
/// One line of JSON without blanks, in UTF-8.
std::string toLine(const Json::Value& value);
/// False when `text` is no JSON, or an object in it has a key twice.
[[nodiscard]] bool readJson(const std::string& text, Json::Value& value);
/// What is no JSON stays a text.
Json::Value jsonOrText(const std::string& text);

}  // namespace Simulator
