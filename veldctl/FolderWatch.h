#pragma once

#include <poll.h>

#include <vector>

#include "support/NonCopyable.h"
#include "veldctl/Folders.h"

/// Waits for changes in message folders.
class FolderWatch : private Orvel::NonCopyable {
 public:
  /// `folders` must outlive the object.
  FolderWatch(const Folders& folders, std::vector<int> statuses);
  ~FolderWatch();

  /// Waits at most `milliseconds` for a change in the folders or for an event of `others`. Sets `revents` of
  /// `others` as poll(2) does. The time limit is necessary, because inotify can lose events.
  void wait(int milliseconds, std::vector<pollfd>& others);
  void wait(int milliseconds);

 private:
  void watch() const;

  const Folders& folders_;
  const std::vector<int> statuses_;
  const int events_;
};
