#pragma once

#include <string>

namespace Simulator {
/// One of the small file systems that private-gateway creates.
class Disk {
 public:
  explicit Disk(std::string folder) : filler_(folder + "/filler"), folder_(std::move(folder)) {}

  /// Fills the file system. Returns false if the file system is too large to belong to a private gateway.
  bool fill();
  void free();        ///< deletes what fill() has written
  bool full() const;  ///< returns true between fill() and free()

 private:
  std::string filler_;
  std::string folder_;
};
}  // namespace Simulator
