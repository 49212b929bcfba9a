#pragma once

#include <poll.h>

#include <vector>

#include "support/NonCopyable.h"
#include "veldctl/Folders.h"

/// Tells when something has happened in message folders.
class FolderWatch : private Orvel::NonCopyable {
 public:
  /// `folders` outlives the object.
  FolderWatch(const Folders& folders, std::vector<int> statuses);
  ~FolderWatch();

  /// Waits until something happens there or to one of `others`, and `milliseconds` at most, since events can
  /// be lost. Fills in what happened to `others`, as poll(2) does.
  void wait(int milliseconds, std::vector<pollfd>& others);
  void wait(int milliseconds);

 private:
  void watch() const;

  const Folders& folders_;
  const std::vector<int> statuses_;
  const int events_;
};
