#pragma once

#include <string>

namespace Simulator {

/// A small file system that private-gateway has made. It can be filled to the last byte.
class Disk {
 public:
  explicit Disk(std::string folder) : filler_(folder + "/filler"), folder_(std::move(folder)) {}

  /// Fills the file system. Returns false and does nothing if it is too large to come from private-gateway.
  bool fill();
  void free();
  bool full() const;

 private:
  std::string filler_;
  std::string folder_;
};

}  // namespace Simulator
