#pragma once

#include <json/json.h>

#include <optional>
#include <string>

namespace Standalone {

/// Parses `text` as strict JSON: an object or an array, with nothing after it, no comments and no duplicate
/// keys. Nullopt on an error; `fault` then describes it in one line, with line and column.
std::optional<Json::Value> parseStrictJson(const std::string& text, std::string& fault);

/// Returns `value` as JSON in one line.
std::string toLine(const Json::Value& value);

}  // namespace Standalone
