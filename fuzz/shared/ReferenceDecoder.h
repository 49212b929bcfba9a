#pragma once

#include <json/json.h>

#include <string>

/// Decodes user data step by step: finds an escape, erases it, inserts its character. This is slow, but
/// obviously correct. The fuzz target `listing` compares the daemon's decoder with it.
namespace ReferenceDecoder {
/// Does what parseUserDataHeader() does.
void parseHeader(Json::Value& record, std::string& text);

/// Does what unescapeText() does.
void unescape(std::string& text);

/// Does what decodeGsmEscapes() does.
void decode(std::string& text);
}  // namespace ReferenceDecoder
