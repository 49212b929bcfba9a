#include "veldctl/Processes.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {
std::string firstLine(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

// Parses PID (NAME) STATE PARENT GROUP SESSION, and in field 22 the start in clock ticks. False for a zombie.
bool parse(const std::string& stat, Process& process, long long& start) {
  constexpr char fields[] =
      "%d (%15[^)]) %*1[^Z] %d %*d %d %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %lld";
  constexpr int wanted = 5;
  return std::sscanf(stat.c_str(), fields, &process.pid, process.name, &process.parent, &process.session,
                     &start) == wanted;
}
}  // namespace

bool Process::isDaemon() const { return std::string("veld") == name && session == pid; }

std::string Process::folder() const { return "/proc/" + std::to_string(pid); }

std::vector<Process> processes() {
  std::vector<Process> all;
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    Process next;
    long long start = 0;
    if (!parse(firstLine(entry.path() / "stat"), next, start)) continue;
    next.age = now.tv_sec - start / sysconf(_SC_CLK_TCK);
    all.push_back(next);
  }
  return all;
}

bool isDaemonRunning() {
  const std::vector<Process> all = processes();
  return std::any_of(all.begin(), all.end(), [](const Process& each) { return each.isDaemon(); });
}

Work workOf(const Process& process, const std::vector<Process>& all) {
  Work work;
  const auto childOf = [&](int pid) {
    return std::find_if(all.begin(), all.end(), [pid](const Process& child) { return child.parent == pid; });
  };
  for (auto child = childOf(process.pid); child != all.end(); child = childOf(child->pid)) {
    work.commandLine = firstLine(child->folder() + "/cmdline");
    work.age = std::max(work.age, child->age);
  }
  std::replace(work.commandLine.begin(), work.commandLine.end(), '\0', ' ');
  return work;
}

bool asksApi(const Process& daemon) {
  std::error_code gone;
  const auto isSocket = [&](const fs::directory_entry& entry) {
    return fs::read_symlink(entry.path(), gone).string().compare(0, 7, "socket:") == 0;
  };
  const auto sockets = std::count_if(fs::directory_iterator(daemon.folder() + "/fd", gone),
                                     fs::directory_iterator(), isSocket);
  return sockets > 1;
}
