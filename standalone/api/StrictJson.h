#pragma once

#include <json/json.h>

#include <optional>
#include <string>

namespace Standalone {
/// Parses `text` as strict JSON: one object or array, and no comments, no duplicate keys, no text after it.
/// Returns nullopt on an error. `fault` is then one line that names the line and the column of the error.
std::optional<Json::Value> parseStrictJson(const std::string& text, std::string& fault);

std::string toLine(const Json::Value& value);
}  // namespace Standalone
