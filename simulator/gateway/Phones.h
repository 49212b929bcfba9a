#pragma once

#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {
/// The phones and the network: the texts on the phones, and the parts that the network has not delivered.
struct Phones {
  struct Text {
    std::string number;
    std::string text;
    bool written;      ///< true: the phone sent the text; false: the gateway sent the text
    std::time_t when;  ///< the time of the gateway's clock
  };
  using Part = std::pair<std::string, std::string>;  ///< the sender's number and the user data

  std::vector<Text> texts;     ///< in the order of time
  std::vector<Part> held;      ///< the parts that the network has not delivered
  unsigned nextReference = 1;  ///< the reference of the next concatenated message
};
}  // namespace Simulator
