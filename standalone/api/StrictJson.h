#pragma once

#include <json/json.h>

#include <optional>
#include <string>

namespace Standalone {

/// Parses `text` as strict JSON: an object or an array, with nothing behind it, no comments and no key twice.
/// None when it is not, and `fault` then says why, with line and column, in one line.
std::optional<Json::Value> parseStrictJson(const std::string& text, std::string& fault);

/// `value` as JSON in one line.
std::string toLine(const Json::Value& value);

}  // namespace Standalone
