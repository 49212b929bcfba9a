#pragma once

#include <ctime>
#include <mutex>
#include <string>
#include <vector>

namespace Simulator {

/// The phones out there: what they wrote to the gateway, and what reached them. May be used by several
/// threads.
class Phones {
 public:
  struct Text {
    std::string number;
    std::string text;
    bool written;      ///< by the phone; otherwise it came from the gateway
    std::time_t when;  ///< on the gateway's clock
  };

  void wrote(const std::string& number, const std::string& text, std::time_t when) {
    add({number, text, true, when});
  }
  void got(const std::string& number, const std::string& text, std::time_t when) {
    add({number, text, false, when});
  }
  /// All of them, in their order.
  std::vector<Text> texts() const {
    const std::lock_guard lock(mutex_);
    return texts_;
  }

 private:
  void add(const Text& text) {
    const std::lock_guard lock(mutex_);
    texts_.push_back(text);
  }

  mutable std::mutex mutex_;
  std::vector<Text> texts_;
};

}  // namespace Simulator
