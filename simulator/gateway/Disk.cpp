#include "simulator/gateway/Disk.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <vector>

namespace Simulator {
namespace {

constexpr unsigned long long largestPrivate = 256ULL << 20;  // bytes

}  // namespace

bool Disk::fill() {
  free();
  struct statvfs disk = {};
  if (statvfs(folder_.c_str(), &disk) != 0) return false;
  if (static_cast<unsigned long long>(disk.f_bavail) * disk.f_frsize > largestPrivate) return false;
  const int file = open(filler_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const std::vector<char> block(disk.f_frsize);
  while (file >= 0 && write(file, block.data(), block.size()) > 0) continue;
  if (file >= 0) close(file);
  return file >= 0;
}

void Disk::free() { unlink(filler_.c_str()); }

bool Disk::full() const { return access(filler_.c_str(), F_OK) == 0; }

}  // namespace Simulator
