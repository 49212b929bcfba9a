#pragma once

#include <json/json.h>

#include <optional>
#include <string>

namespace Standalone {

/// One request of a client.
struct HttpRequest {
  std::string method;
  std::string path;
  std::string body;
};

/// What the received bytes form: the beginning of a request, a whole one, or neither.
enum class HttpState { Incomplete, Whole, Wrong };

/// Fills `request` if `received` is one whole HTTP/1.1 request. Returns Wrong for bytes that cannot become
/// one: a malformed line, two lengths, a transfer encoding, bytes after the body, more than 1 MiB.
HttpState parseHttp(const std::string& received, HttpRequest& request);

/// Reads a request from `socket`; blocks until it is whole. Nullopt if it is wrong, or if the client closes
/// the connection first.
std::optional<HttpRequest> readRequest(int socket);

/// Writes {"code": `code`, "result": `result`} to `socket`, and the HTTP status `code`. False if the client
/// closes first.
bool writeAnswer(int socket, int code, const Json::Value& result);

}  // namespace Standalone
