#pragma once

/// Counts failures in the message folders, which ICollectionStorage does not report to its callers.
struct StorageFaults {
  unsigned failedSaves = 0;  ///< records that did not reach their folder
  unsigned failedReads = 0;  ///< folders and files that could not be opened or read; ignores invalid JSON
};
