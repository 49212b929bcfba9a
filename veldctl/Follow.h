#pragma once

#include <string>
#include <vector>

#include "veldctl/Folders.h"

/// Tells when something has happened in message folders.
class FolderWatch {
 public:
  FolderWatch(const Folders& folders, std::vector<int> statuses);

  /// Waits for that, and `milliseconds` at most: events get lost. False when nobody reads standard output.
  bool wait(int milliseconds);

 private:
  void watch() const;

  const Folders& folders_;
  const std::vector<int> statuses_;
  const int events_;  // open until the program ends
};

/// Prints a line of JSON for each message that arrives, is completed, is sent or fails; returns when nobody
/// reads any more. A `state` file notes what was told: what was not noted is told again. It is made, and
/// begins with now, when there is none; when it is empty everything is new. With `acknowledged`, a line is
/// noted only when one of standard input has answered it; returns when there is none.
void follow(const Folders& folders, const std::string& state, bool acknowledged);
