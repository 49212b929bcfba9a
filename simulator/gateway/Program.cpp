#include "simulator/gateway/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Simulator {
namespace {
constexpr int cannotStart = 127;  // a shell's exit status for a program that cannot start
constexpr int signalBase = 128;   // a shell adds the number of the signal that ended the program
}  // namespace

void Program::start(const std::string& command, const std::string& path) {
  const std::string setting = "PATH=" + path;
  pid_ = fork();
  if (pid_ != 0) return;
  setpgid(0, 0);
  const int null = open("/dev/null", O_RDONLY);
  if (null >= 0) dup2(null, STDIN_FILENO);
  closefrom(STDERR_FILENO + 1);
  execlp("env", "env", setting.c_str(), "sh", "-c", command.c_str(), nullptr);
  _exit(cannotStart);
}

bool Program::running() {
  int status = 0;
  if (pid_ > 0 && waitpid(pid_, &status, WNOHANG) == pid_) {
    status_ = WIFSIGNALED(status) ? signalBase + WTERMSIG(status) : WEXITSTATUS(status);
    pid_ = 0;
  }
  return pid_ > 0;
}

int Program::status() {
  running();
  return status_;
}
}  // namespace Simulator
