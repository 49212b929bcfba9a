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

/// How far the bytes that have arrived are a request.
enum class HttpState { Incomplete, Whole, Wrong };

/// Fills `request` from `received` when that is one whole HTTP/1.1 request and nothing else. Wrong for
/// anything that cannot become one: a broken line, two lengths, a transfer encoding, bytes behind the body,
/// more than 1 MiB.
HttpState parseHttp(const std::string& received, HttpRequest& request);

/// Reads a request from `socket`, and blocks until it is whole. None when it is wrong, or its sender ends the
/// connection first.
std::optional<HttpRequest> readRequest(int socket);

/// Writes {"code": `code`, "result": `result`} to `socket`, with `code` as the HTTP status, too. False when
/// the client does not take it.
bool writeAnswer(int socket, int code, const Json::Value& result);

}  // namespace Standalone
