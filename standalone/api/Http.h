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

/// Whether the received bytes form a request.
enum class HttpState { Incomplete, Whole, Wrong };

/// Fills `request` from `received` when that is one whole HTTP/1.1 request and nothing else. Wrong for
/// anything that cannot become one: a malformed line, two lengths, a transfer encoding, bytes after the body,
/// more than 1 MiB.
HttpState parseHttp(const std::string& received, HttpRequest& request);

/// Reads a request from `socket`, and blocks until it is whole. None when it is wrong, or the client closes
/// the connection first.
std::optional<HttpRequest> readRequest(int socket);

/// Writes {"code": `code`, "result": `result`} to `socket`, with `code` also as the HTTP status. False when
/// the client does not read it.
bool writeAnswer(int socket, int code, const Json::Value& result);

}  // namespace Standalone
