#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "support/NonCopyable.h"
#include "veldctl/News.h"

/// The file of `follow --state`: what was told, as one JSON object of [TIME, LACKS-PARTS] by folder and name.
class StateFile : private Orvel::NonCopyable {
 public:
  /// Takes a lock beside the file. Throws std::runtime_error when another process has it.
  explicit StateFile(std::string path);
  ~StateFile();

  /// None when there is no file. Of an empty one, or one that is no state file, nothing is known.
  [[nodiscard]] std::optional<News::AllKnown> read() const;

  /// Writes what is known when it has changed since it was written.
  void write(const News::AllKnown& known);

  /// The same, but once a second at most.
  void writeSoon(const News::AllKnown& known);

 private:
  const std::string path_;
  const int lock_;
  std::optional<News::AllKnown> written_;
  std::time_t time_ = 0;  // of the last writing
};
