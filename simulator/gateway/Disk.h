#pragma once

#include <string>

namespace Simulator {

/// A file system of private-gateway's, which can be filled to the last byte.
class Disk {
 public:
  explicit Disk(std::string folder) : filler_(folder + "/filler"), folder_(std::move(folder)) {}

  /// False, with nothing done, when the file system is too large to be private-gateway's.
  bool fill();
  void free();
  bool full() const;

 private:
  std::string filler_;
  std::string folder_;
};

}  // namespace Simulator
