#pragma once

#include <json/json.h>

#include <sstream>
#include <string>

/// Parses JSON. Unlike json(), replaces no character.
inline Json::Value jsonAsItIs(const std::string& text) {
  Json::Value value;
  std::istringstream(text) >> value;
  return value;
}

/// Parses JSON that is written with ' instead of ".
inline Json::Value json(std::string text) {
  for (char& c : text)
    if (c == '\'') c = '"';
  return jsonAsItIs(text);
}

/// Returns `base` with the members of `changes`. If both have an object under a key, merges the objects.
inline Json::Value merged(Json::Value base, const Json::Value& changes) {
  for (const std::string& key : changes.getMemberNames())
    base[key] =
        base[key].isObject() && changes[key].isObject() ? merged(base[key], changes[key]) : changes[key];
  return base;
}
