#pragma once

#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {

/// The phones and the network: the texts from and to phones, and the parts that the network holds back.
struct Phones {
  struct Text {
    std::string number;
    std::string text;
    bool written;      ///< by the phone; false: by the gateway
    std::time_t when;  ///< on the gateway's clock
  };
  using Part = std::pair<std::string, std::string>;  ///< the sender's number, the user data

  std::vector<Text> texts;     ///< in their order
  std::vector<Part> held;      ///< parts that the network holds back
  unsigned nextReference = 1;  ///< the reference of the next concatenated message
};

}  // namespace Simulator
