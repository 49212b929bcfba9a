#pragma once

#include <string>

/// What a file holds.
struct FileContent {
  std::string text;
  int openError =
      0;  ///< the errno of an open that failed; ENXIO for a FIFO, a socket or a device, which is not read
  int readError = 0;  ///< the errno of a read that failed; EFBIG for a file that is longer than any message

  /// Reads the file at `path`. Waits for no other process.
  static FileContent read(const std::string& path);
};
