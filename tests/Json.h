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

/// `base` with the members of `changes`. Where both have an object, its other members stay.
inline Json::Value merged(Json::Value base, const Json::Value& changes) {
  for (const std::string& key : changes.getMemberNames())
    base[key] =
        base[key].isObject() && changes[key].isObject() ? merged(base[key], changes[key]) : changes[key];
  return base;
}
