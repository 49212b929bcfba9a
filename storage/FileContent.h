#pragma once

#include <cstddef>
#include <string>

/// The content of a file, or the errno of the call that failed.
struct FileContent {
  std::string text;
  int openError = 0;  ///< of a failed open; ENXIO for a FIFO, a socket or a device, which is not read
  int readError = 0;  ///< of a failed read; EFBIG for a file that is too long

  static constexpr std::size_t longestMessage = 4 * 1024 * 1024;  ///< 255 parts, all characters escaped

  /// Reads the file at `path` if it is not longer than `longest` bytes. Does not block on another process.
  static FileContent read(const std::string& path, std::size_t longest = longestMessage);
};
