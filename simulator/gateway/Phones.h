#pragma once

#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {

/// The phones out there and the network between: what they wrote to the gateway, and what reached them.
struct Phones {
  struct Text {
    std::string number;
    std::string text;
    bool written;      ///< by the phone; otherwise it came from the gateway
    std::time_t when;  ///< on the gateway's clock
  };
  using Part = std::pair<std::string, std::string>;  ///< a number and the user data

  std::vector<Text> texts;     ///< in their order
  std::vector<Part> held;      ///< that are to come in later
  unsigned nextReference = 1;  ///< of a long message
};

}  // namespace Simulator
