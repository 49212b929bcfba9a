#pragma once

#include <string>
#include <vector>

/// Flushes the files at `paths` and their folder entries to the disk with fsync. If a file does not exist,
/// its removal is flushed. Blocks. False, with errno set, if a file cannot be opened or flushed.
[[nodiscard]] bool flushFiles(const std::vector<std::string>& paths);
