#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Replaces libcurl in a fuzz target, so that no request leaves the process. Records each transfer, and
/// answers it with the answer that the target has set.
namespace FakeCurl {

struct Request {
  std::string url;
  std::string body;  ///< empty for a GET
};

extern std::vector<Request> requests;  ///< in order, since the target last cleared them
extern std::string answer;
extern std::size_t pieceSize;  ///< the bytes of the answer that one call of the write callback gets

}  // namespace FakeCurl
