#include "veldctl/FolderWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

FolderWatch::FolderWatch(const Folders& folders, std::vector<int> statuses)
    : folders_(folders), statuses_(std::move(statuses)), events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  watch();
}

FolderWatch::~FolderWatch() { close(events_); }

// Runs again after each wait, because another process may have replaced a folder.
void FolderWatch::watch() const {
  for (const int status : statuses_)
    inotify_add_watch(events_, folders_.path(status).c_str(),
                      IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVE);
}

void FolderWatch::wait(int milliseconds, std::vector<pollfd>& others) {
  others.push_back({events_, POLLIN, 0});
  poll(others.data(), others.size(), milliseconds);
  others.pop_back();
  char events[4096];
  while (read(events_, events, sizeof(events)) > 0) continue;
  watch();
}

void FolderWatch::wait(int milliseconds) {
  std::vector<pollfd> none;
  wait(milliseconds, none);
}
