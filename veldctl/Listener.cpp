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
constexpr std::size_t longestVariable = 100 * 1024;  // bytes; execve takes no longer string than 128 KiB

// A file in memory that holds `text`: a pipe would block when the program reads nothing.
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

// In the child process.
[[noreturn]] void become(const std::string& path, const Event& event, int input) {
  dup2(input, STDIN_FILENO);
  setVariable("VELD_EVENT", event.what);
  setVariable("VELD_GUID", event.message.name);
  setVariable("VELD_NUMBER", event.message.number());
  setVariable("VELD_TEXT", event.message.text());
  execlp(path.c_str(), path.c_str(), nullptr);
  constexpr int notFound = 127;
  _exit(notFound);
}

// How the program ended, in waitpid's form.
int run(const std::string& path, const Event& event) {
  const int input = fileWith(Output::line(toJson(event)) + "\n");
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) become(path, event, input);
  close(input);
  int ending = 0;
  while (waitpid(child, &ending, 0) < 0 && errno == EINTR) continue;
  return ending;
}

std::string describe(int ending) {
  if (WIFSIGNALED(ending)) return "was ended by signal " + std::to_string(WTERMSIG(ending));
  return "ended with status " + std::to_string(WEXITSTATUS(ending));
}

}  // namespace

Listener::Answer Lines::tell(const Event& event) {
  std::cout << (isJson_ ? Output::line(toJson(event)) : toText(event)) << std::endl;
  return std::cout ? Answer::Told : Answer::Gone;
}

std::vector<pollfd> Lines::watched() const { return {{STDOUT_FILENO, 0, 0}}; }

bool Lines::isGone(const std::vector<pollfd>& polled) {
  return (polled[0].revents & (POLLERR | POLLHUP)) != 0;
}

// False at the end of standard input.
bool AnsweredLines::readMore() {
  char piece[256];
  const ssize_t size = read(STDIN_FILENO, piece, sizeof(piece));
  if (size <= 0) return false;
  early_.append(piece, static_cast<std::size_t>(size));
  return true;
}

Listener::Answer AnsweredLines::tell(const Event& event) {
  if (Lines::tell(event) == Answer::Gone) return Answer::Gone;
  while (early_.find('\n') == std::string::npos)
    if (!readMore()) return Answer::Gone;
  early_.erase(0, early_.find('\n') + 1);
  return Answer::Told;
}

// An early answer is not read before the line that it answers, so that only the end of the reader counts.
std::vector<pollfd> AnsweredLines::watched() const {
  std::vector<pollfd> all = Lines::watched();
  all.push_back({STDIN_FILENO, static_cast<short>(early_.empty() ? POLLIN : 0), 0});
  return all;
}

bool AnsweredLines::isGone(const std::vector<pollfd>& polled) {
  if (Lines::isGone(polled)) return true;
  const bool isReadable = (polled[1].revents & POLLIN) != 0;
  return isReadable ? !readMore() : (polled[1].revents & (POLLHUP | POLLERR)) != 0;
}

Listener::Answer Program::tell(const Event& event) {
  const int ending = run(path_, event);
  if (ending == 0) {
    pause_ = 0;
    return Answer::Told;
  }
  pause_ = std::clamp(2 * pause_, 1U, longestPause);
  Output::complain(path_ + " " + describe(ending) + " for " + event.message.name + "; it runs again in " +
                   std::to_string(pause_) + " s");
  return Answer::Later;
}
