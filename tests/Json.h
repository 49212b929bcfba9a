#pragma once

#include <json/json.h>

#include <sstream>
#include <string>

inline Json::Value jsonAsItIs(const std::string& text) {
  std::istringstream stream(text);
  Json::Value value;
  stream >> value;
  return value;
}

/// JSON from a text in the test's source, with ' for ".
inline Json::Value json(std::string text) {
  for (char& c : text)
    if (c == '\'') c = '"';
  return jsonAsItIs(text);
}
