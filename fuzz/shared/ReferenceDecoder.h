#pragma once

#include <json/json.h>

#include <string>

/// The decoding of user data written down step by step, with a search, an erasure and an insertion for every
/// escape: slow, and plain enough to be seen right. The fuzz targets hold the daemon's against it.
namespace ReferenceDecoder {

/// What parseUserDataHeader does.
void parseHeader(Json::Value& record, std::string& text);

/// What unescapeText does.
void unescape(std::string& text);

/// What decodeGsmEscapes does.
void decode(std::string& text);

}  // namespace ReferenceDecoder
