#pragma once

#include <cstdint>
#include <ctime>
#include <string>

/// The number of messages in the daemon's spool. A pass keeps each message there until it has filed the
/// message: for a moment, or longer if the daemon hangs, has ended or cannot write.
struct SpoolCounts {
  std::int64_t received = 0;  ///< received messages
  std::int64_t begun = 0;     ///< messages that the tool is sending
  std::int64_t answered = 0;  ///< messages for which the tool has ended, but which were not filed yet
  std::int64_t damaged = 0;   ///< damaged files
  std::time_t since = 0;      ///< when the first of the received messages arrived; 0 if unknown
  bool isReadable = true;     ///< false if the spool cannot be read
};

/// Reads the spool. `root` is the folder above the message folders.
SpoolCounts readSpool(const std::string& root);
