#pragma once

#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {

/// The phones out there and the network between: what they wrote to the gateway, and what reached them.
class Phones {
 public:
  struct Text {
    std::string number;
    std::string text;
    bool written;      ///< by the phone; otherwise it came from the gateway
    std::time_t when;  ///< on the gateway's clock
  };
  using Part = std::pair<std::string, std::string>;  ///< a number and the user data

  void add(const Text& text) { texts_.push_back(text); }
  /// All of them, in their order.
  const std::vector<Text>& texts() const { return texts_; }

  /// The reference of the next long message, and that it was used.
  unsigned nextReference() const { return reference_; }
  void useReference() { ++reference_; }

  /// Keeps a part back until it is taken.
  void hold(const Part& part) { held_.push_back(part); }
  std::vector<Part> takeHeld() { return std::exchange(held_, {}); }

 private:
  std::vector<Text> texts_;
  unsigned reference_ = 1;
  std::vector<Part> held_;
};

}  // namespace Simulator
