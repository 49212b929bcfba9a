#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>

/// The gateway's local HTTP API, which answers every request with a JSON object: "code", 200 for success, and
/// "result". It listens on a UNIX-domain socket, so the host of a URL is ignored. Calls block without a
/// time-out.

constexpr char localApiSocket[] = "/var/run/api/http.sock";
constexpr char localApiHost[] = "http://localhost";  ///< precedes the path of every URL

/// GETs `url` and copies the "result" of the answer into `result`; JSON null if the answer has none. False,
/// with `result` unchanged, if the transfer fails, the answer is not strict JSON or its "code" is not 200.
/// Logs no failure. Throws the JSON library's exception if "code" is not an unsigned number.
bool loadFromApi(const std::string& url, Json::Value& result);

/// The same with a time-out in seconds: false when it expires. 0 means no time-out.
bool loadFromApi(const std::string& url, Json::Value& result, long timeout);

/// A libcurl write callback: appends `size` times `count` bytes at `data` to the std::string at `answer` and
/// returns their number. Returns 0, which aborts the transfer, if `answer` is null.
std::size_t appendAnswer(char* data, std::size_t size, std::size_t count, void* answer);

/// The write callback of loadFromApi: logs a line and calls appendAnswer.
std::size_t curlWriter(char* data, std::size_t size, std::size_t count, void* answer);

/// Parses `text` as strict JSON: an object or an array, without trailing text, comments or duplicate keys.
/// False if it is not, or if it is nested too deep for the JSON library.
bool parseJson(std::string text, Json::Value* value);
