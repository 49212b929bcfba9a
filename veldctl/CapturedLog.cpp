#include "veldctl/CapturedLog.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>

#include "support/NonCopyable.h"

namespace {
// While the object exists, standard error goes to a file in memory.
class Redirection : private Orvel::NonCopyable {
 public:
  Redirection() : file_(memfd_create("log", MFD_CLOEXEC)), before_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    dup2(file_, STDERR_FILENO);
  }
  ~Redirection() {
    dup2(before_, STDERR_FILENO);
    close(before_);
    close(file_);
  }

  [[nodiscard]] std::string text() const {
    std::string all(static_cast<std::size_t>(lseek(file_, 0, SEEK_END)), '\0');
    const ssize_t size = pread(file_, all.data(), all.size(), 0);
    all.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return all;
  }

 private:
  const int file_;
  const int before_;
};
}  // namespace

std::vector<std::string> capturedLog(const std::function<void()>& work) {
  const Redirection redirection;
  work();
  std::vector<std::string> lines;
  const std::string text = redirection.text();
  for (std::size_t begin = 0, end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
    lines.push_back(text.substr(begin, end - begin));
  return lines;
}
