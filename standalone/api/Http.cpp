#include "standalone/api/Http.h"

#include <sys/socket.h>

#include <string_view>

#include "standalone/api/StrictJson.h"
#include "support/Text.h"

namespace Standalone {
namespace {
constexpr std::size_t mostBytes = 1 << 20;
constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view headEnd = "\r\n\r\n";

// Removes the first line from `rest`. Returns the line without its line end.
std::string takeLine(std::string_view& rest) {
  const std::size_t length = rest.find(lineEnd);
  const std::string line(rest.substr(0, length));
  rest.remove_prefix(length + lineEnd.size());
  return line;
}

// Reads "GET /path HTTP/1.1". Returns false if the line has another form.
bool readRequestLine(const std::string& line, HttpRequest& request) {
  const auto words = Orvel::Text::split(line, " ", 4);
  if (words.size() != 3 || words[2] != "HTTP/1.1" || words[1].compare(0, 1, "/") != 0) return false;
  request.method = words[0];
  request.path = words[1];
  return true;
}

// Reads a length of at most six digits. Returns nullopt for any other text.
std::optional<std::size_t> readLength(const std::string& digits) {
  if (digits.empty() || digits.size() > 6) return std::nullopt;
  if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  return std::stoul(digits);
}

// Returns the length of the body from the header lines; 0 if no line names it; nullopt if a line is wrong.
std::optional<std::size_t> bodyLength(std::string_view lines) {
  std::optional<std::size_t> length;
  while (!lines.empty()) {
    const std::string line = takeLine(lines);
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0) return std::nullopt;
    const std::string name = Orvel::Text::toLowerCase(line.substr(0, colon));
    if (name == "transfer-encoding") return std::nullopt;
    if (name != "content-length") continue;
    if (length) return std::nullopt;
    length = readLength(Orvel::Text::trim(line.substr(colon + 1)));
    if (!length) return std::nullopt;
  }
  return length.value_or(0);
}
}  // namespace

HttpState parseHttp(const std::string& received, HttpRequest& request) {
  if (received.size() > mostBytes) return HttpState::Wrong;
  const std::size_t head = received.find(headEnd);
  if (head == std::string::npos) return HttpState::Incomplete;
  std::string_view lines(received.data(), head + lineEnd.size());
  if (!readRequestLine(takeLine(lines), request)) return HttpState::Wrong;
  const std::optional<std::size_t> length = bodyLength(lines);
  if (!length) return HttpState::Wrong;
  const std::size_t arrived = received.size() - head - headEnd.size();
  if (arrived > *length) return HttpState::Wrong;
  request.body = received.substr(head + headEnd.size());
  return arrived == *length ? HttpState::Whole : HttpState::Incomplete;
}

std::optional<HttpRequest> readRequest(int socket) {
  std::string received;
  for (HttpRequest request;;) {
    char piece[4096];
    const ssize_t count = recv(socket, piece, sizeof piece, 0);
    if (count <= 0) return std::nullopt;
    received.append(piece, static_cast<std::size_t>(count));
    const HttpState state = parseHttp(received, request);
    if (state == HttpState::Whole) return request;
    if (state == HttpState::Wrong) return std::nullopt;
  }
}

bool writeAnswer(int socket, int code, const Json::Value& result) {
  Json::Value envelope;
  envelope["code"] = code;
  envelope["result"] = result;
  const std::string body = toLine(envelope);
  const std::string answer = "HTTP/1.1 " + std::to_string(code) + " \r\nContent-Type: application/json\r\n" +
                             "Content-Length: " + std::to_string(body.size()) +
                             "\r\nConnection: close\r\n\r\n" + body;
  for (std::size_t written = 0; written < answer.size();) {
    const ssize_t count = send(socket, answer.data() + written, answer.size() - written, MSG_NOSIGNAL);
    if (count <= 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}
}  // namespace Standalone
