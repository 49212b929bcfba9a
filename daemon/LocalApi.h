#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>

/// The gateway's local HTTP API, which answers every request with a JSON object: "code", 200 for success, and
/// "result". It listens on a UNIX-domain socket, so the host of a URL says nothing; calls block without a
/// time-out.

constexpr char localApiSocket[] = "/var/run/api/http.sock";
constexpr char localApiHost[] = "http://localhost";  ///< what stands before the path of every URL

/// GETs `url` and copies the "result" of the answer into `result`; JSON null when the answer has none. False,
/// with `result` as it was, when the transfer fails, the answer is no strict JSON or its "code" is not 200.
/// Logs no fault. A "code" that is no unsigned number throws the JSON library's exception.
bool loadFromApi(const std::string& url, Json::Value& result);

/// The same for who cannot wait: false after `timeout` seconds, too. 0: without a time-out.
bool loadFromApi(const std::string& url, Json::Value& result, long timeout);

/// A libcurl write callback: appends `size` times `count` bytes at `data` to the std::string at `answer`, and
/// returns their number; 0, which ends the transfer, when `answer` is null.
std::size_t appendAnswer(char* data, std::size_t size, std::size_t count, void* answer);

/// appendAnswer with a line in the log; the write callback of loadFromApi.
std::size_t curlWriter(char* data, std::size_t size, std::size_t count, void* answer);

/// Parses `text` as strict JSON: an object or an array, with nothing behind it, no comments and no key twice.
/// False when it is not, or is nested too deep for the JSON library.
bool parseJson(std::string text, Json::Value* value);
