#include "simulator/gateway/Disk.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace Simulator {
namespace {
constexpr std::uintmax_t largestPrivate = 256 << 20;  // bytes
constexpr std::size_t blockSize = 4096;
}  // namespace

bool Disk::fill() {
  free();
  std::error_code error;
  if (std::filesystem::space(folder_, error).available > largestPrivate) return false;
  std::ofstream file(filler_);
  if (!file) return false;
  const std::string block(blockSize, ' ');
  while (file << block << std::flush) continue;
  return true;
}

void Disk::free() { unlink(filler_.c_str()); }

bool Disk::full() const { return access(filler_.c_str(), F_OK) == 0; }
}  // namespace Simulator
