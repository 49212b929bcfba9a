#include "veldctl/Listener.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <system_error>

#include "veldctl/Output.h"

namespace {
constexpr unsigned longestPause = 300;               // seconds
constexpr std::size_t longestVariable = 100 * 1024;  // bytes; execve limits a string to 128 KiB

// Returns a file in memory that holds `text`. With a pipe, write() would block if the program did not read.
int fileWith(const std::string& text) {
  const int file = memfd_create("event", 0);
  const auto size = static_cast<ssize_t>(text.size());
  if (file < 0 || write(file, text.data(), text.size()) != size || lseek(file, 0, SEEK_SET) != 0)
    throw std::system_error(errno, std::generic_category(), "memfd_create");
  return file;
}

void setVariable(const char* name, const std::string& value) {
  setenv(name, value.substr(0, longestVariable).c_str(), 1);
}

[[noreturn]] void execute(const std::string& path, const Event& event, int input) {
  dup2(input, STDIN_FILENO);
  setVariable("VELD_EVENT", event.kind);
  setVariable("VELD_GUID", event.message.name);
  setVariable("VELD_NUMBER", event.message.number());
  setVariable("VELD_TEXT", event.message.text());
  execlp(path.c_str(), path.c_str(), nullptr);
  constexpr int notFound = 127;
  _exit(notFound);
}

// Runs the program and returns the status that waitpid() reports.
int run(const std::string& path, const Event& event) {
  const int input = fileWith(Output::line(toJson(event)) + "\n");
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) execute(path, event, input);
  close(input);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return status;
}

std::string describe(int status) {
  if (WIFSIGNALED(status)) return "was ended by signal " + std::to_string(WTERMSIG(status));
  return "ended with status " + std::to_string(WEXITSTATUS(status));
}
}  // namespace

Listener::Result Lines::report(const Event& event) {
  std::cout << (isJson_ ? Output::line(toJson(event)) : toText(event)) << std::endl;
  return std::cout ? Result::Reported : Result::Gone;
}

std::vector<pollfd> Lines::watched() const { return {{STDOUT_FILENO, 0, 0}}; }

bool Lines::isGone(const std::vector<pollfd>& polled) {
  return (polled[0].revents & (POLLERR | POLLHUP)) != 0;
}

// Reads more of standard input. Returns false at its end.
bool AcknowledgedLines::readMore() {
  char piece[256];
  const ssize_t size = read(STDIN_FILENO, piece, sizeof(piece));
  if (size <= 0) return false;
  unused_.append(piece, static_cast<std::size_t>(size));
  return true;
}

Listener::Result AcknowledgedLines::report(const Event& event) {
  if (Lines::report(event) == Result::Gone) return Result::Gone;
  while (unused_.find('\n') == std::string::npos)
    if (!readMore()) return Result::Gone;
  unused_.erase(0, unused_.find('\n') + 1);
  return Result::Reported;
}

// While there is unused input, polls for a hang-up only, because more input must not end the wait.
std::vector<pollfd> AcknowledgedLines::watched() const {
  std::vector<pollfd> all = Lines::watched();
  all.push_back({STDIN_FILENO, static_cast<short>(unused_.empty() ? POLLIN : 0), 0});
  return all;
}

bool AcknowledgedLines::isGone(const std::vector<pollfd>& polled) {
  if (Lines::isGone(polled)) return true;
  if ((polled[1].revents & POLLIN) != 0) return !readMore();
  return (polled[1].revents & (POLLHUP | POLLERR)) != 0;
}

Listener::Result Program::report(const Event& event) {
  const int status = run(path_, event);
  if (status == 0) {
    pause_ = 0;
    return Result::Reported;
  }
  pause_ = std::clamp(2 * pause_, 1U, longestPause);
  Output::complain(path_ + " " + describe(status) + " for " + event.message.name + "; it runs again in " +
                   std::to_string(pause_) + " s");
  return Result::Retry;
}
