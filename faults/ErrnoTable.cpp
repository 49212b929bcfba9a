#include "faults/ErrnoTable.h"

namespace {

struct Row {
  const char* call;
  std::vector<std::string> errors;
};

// Left out are calls that have no way to fail here (rt_sigprocmask, umask, prlimit64, fcntl, ...), and what
// strace cannot let fail as the kernel does: close and munmap would not be made at all, and leave behind what
// they free; brk tells a failure by an address.
const std::vector<Row> rows = {
    {"openat", {"EMFILE", "ENFILE", "ENOMEM", "EIO"}},
    {"read", {"EIO"}},
    {"write", {"ENOSPC", "EIO", "EINTR"}},
    {"writev", {"ENOSPC", "EIO", "EINTR"}},
    {"newfstatat", {"ENOMEM", "EIO"}},
    {"access", {"EIO"}},
    {"getdents64", {"EIO", "ENOMEM"}},
    {"unlink", {"EIO", "EROFS"}},
    {"rename", {"EIO", "ENOSPC", "EROFS"}},
    {"fsync", {"EIO", "ENOSPC"}},
    {"syncfs", {"EIO", "ENOSPC"}},
    {"flock", {"EWOULDBLOCK", "ENOLCK", "EINTR"}},
    {"pipe2", {"EMFILE", "ENFILE"}},
    {"clone3", {"EAGAIN", "ENOMEM"}},
    {"wait4", {"ECHILD", "EINTR"}},
    {"mmap", {"ENOMEM"}},
    {"setsid", {"EPERM"}},
    {"chdir", {"EIO", "ENOMEM"}},
    {"socket", {"EMFILE", "ENOBUFS"}},
    {"socketpair", {"EMFILE", "ENOBUFS"}},
    {"eventfd2", {"EMFILE", "ENOMEM"}},
    {"connect", {"ECONNREFUSED", "EAGAIN", "ENOMEM"}},
    {"sendto", {"ECONNREFUSED", "ENOBUFS", "EPIPE"}},
    {"recvfrom", {"ECONNRESET", "ENOMEM"}},
    {"poll", {"ENOMEM", "EINTR"}},
};

const std::vector<std::string> writingErrors = {"EMFILE", "ENFILE", "ENOMEM",
                                                "EIO",    "ENOSPC", "EROFS"};  // of openat

}  // namespace

std::vector<std::string> plausibleErrors(const Tracer::Call& call) {
  const bool writes = call.text.find("O_WRONLY") != std::string::npos;
  for (const Row& row : rows)
    if (call.name == row.call) return call.name == "openat" && writes ? writingErrors : row.errors;
  return {};
}
