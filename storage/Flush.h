#pragma once

#include <string>
#include <vector>

/// Brings the files at `paths`, and the entries of their folders, to the disk. A file that does not exist is
/// left out: its removal is brought to the disk instead. Blocks. False, with errno, when the disk reports a
/// fault.
[[nodiscard]] bool flushFiles(const std::vector<std::string>& paths);
