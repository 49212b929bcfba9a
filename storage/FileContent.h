#pragma once

#include <string>

/// The content of a file, or the errno of the call that failed.
struct FileContent {
  std::string text;
  int openError = 0;  ///< of a failed open; ENXIO for a FIFO, a socket or a device, which is not read
  int readError = 0;  ///< of a failed read; EFBIG for a file that is longer than any message

  /// Reads the file at `path`. Does not block on another process.
  static FileContent read(const std::string& path);
};
