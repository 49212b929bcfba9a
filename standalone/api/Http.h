#pragma once

#include <json/json.h>

#include <optional>
#include <string>

namespace Standalone {
struct HttpRequest {
  std::string method;
  std::string path;
  std::string body;
};

/// Whether received bytes are the beginning of a request, a whole request, or neither.
enum class HttpState { Incomplete, Whole, Wrong };

/// Fills `request` if `received` is one whole HTTP/1.1 request. Returns Wrong for a malformed line, two
/// lengths, a transfer encoding, bytes after the body, or more than 1 MiB.
HttpState parseHttp(const std::string& received, HttpRequest& request);

/// Reads a request from `socket`, and blocks until the request is whole. Returns nullopt if the request is
/// wrong, or if the client closes the connection first.
std::optional<HttpRequest> readRequest(int socket);

/// Writes an HTTP answer with the status `code` and the body {"code": `code`, "result": `result`} to
/// `socket`. Returns false if the client has closed the connection.
bool writeAnswer(int socket, int code, const Json::Value& result);
}  // namespace Standalone
