#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Takes the place of libcurl in a fuzz target: no request leaves the process. Every transfer succeeds, is
/// kept, and is answered with a text that the target sets.
namespace FakeCurl {

struct Request {
  std::string url;
  std::string body;  ///< empty for a GET
};

extern std::vector<Request> requests;  ///< in their order; the target clears it
extern std::string answer;
extern std::size_t pieceSize;  ///< bytes of the answer that the write callback is given at once

}  // namespace FakeCurl
