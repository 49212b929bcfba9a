#pragma once

#include <json/json.h>

#include <string>

/// Decodes user data step by step, with a search, an erasure and an insertion for every escape. It is slow,
/// but obviously correct. The fuzz targets compare the daemon's decoder with it.
namespace ReferenceDecoder {

/// What parseUserDataHeader does.
void parseHeader(Json::Value& record, std::string& text);

/// What unescapeText does.
void unescape(std::string& text);

/// What decodeGsmEscapes does.
void decode(std::string& text);

}  // namespace ReferenceDecoder
