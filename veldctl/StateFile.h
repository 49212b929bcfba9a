#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "support/NonCopyable.h"
#include "veldctl/News.h"

/// The file of `follow --state`: a JSON object with [TIME, LACKS-PARTS] for each reported "FOLDER/NAME".
class StateFile : private Orvel::NonCopyable {
 public:
  /// Locks the file PATH.lock. Throws std::runtime_error if another process holds the lock.
  explicit StateFile(std::string path);
  ~StateFile();

  /// Reads the file. Returns nullopt if it is missing, and an empty map if it is empty or not a state file.
  [[nodiscard]] std::optional<News::AllKnown> read() const;

  /// Writes the file if `known` differs from its content.
  void write(const News::AllKnown& known);

  /// Calls write(), but at most once per second.
  void writeSoon(const News::AllKnown& known);

 private:
  const std::string path_;
  const int lock_;
  std::optional<News::AllKnown> written_;
  std::time_t time_ = 0;  ///< of the last write
};
