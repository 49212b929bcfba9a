#pragma once

#include <string>

namespace Simulator {

/// One of the small file systems that private-gateway creates.
class Disk {
 public:
  explicit Disk(std::string folder) : filler_(folder + "/filler"), folder_(std::move(folder)) {}

  /// Fills the file system. Does nothing and returns false if it is larger than those of private-gateway.
  bool fill();
  void free();        ///< deletes what fill() has written
  bool full() const;  ///< returns true between fill() and free()

 private:
  std::string filler_;
  std::string folder_;
};

}  // namespace Simulator
