#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Replaces libcurl in a fuzz target: no request leaves the process. Every transfer succeeds, is recorded,
/// and gets an answer that the target sets.
namespace FakeCurl {

struct Request {
  std::string url;
  std::string body;  ///< empty for a GET
};

extern std::vector<Request> requests;  ///< in order; the target clears them
extern std::string answer;
extern std::size_t pieceSize;  ///< bytes of the answer in one call of the write callback

}  // namespace FakeCurl
