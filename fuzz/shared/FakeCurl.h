#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Replaces libcurl in a fuzz target, so that no request leaves the process. Adds each transfer to
/// `requests`, and passes `answer` to the transfer's write callback.
namespace FakeCurl {
struct Request {
  std::string url;
  std::string body;  ///< empty for a GET
};

extern std::vector<Request> requests;  ///< in order; the target clears the list
extern std::string answer;
extern std::size_t pieceSize;  ///< the largest number of bytes that one call of the callback receives
}  // namespace FakeCurl
