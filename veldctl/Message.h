#pragma once

#include <json/json.h>

#include <cstdint>
#include <ctime>
#include <string>

/// One file of a message folder.
struct Message {
  int status = 0;            ///< its folder, see MessageStatus
  std::string name;          ///< of the file; the guid, when all is well
  Json::Value record;        ///< null when the file holds none
  std::string content;       ///< of a file that holds no record, as far as it was read
  std::string fault;         ///< why veld cannot handle the file; empty when it can
  std::string danger;        ///< why `veldctl send` would refuse the recipient; empty when it would not
  std::int64_t changed = 0;  ///< when the file was written, in nanoseconds since 1970

  /// What is to stand behind a question mark: the fault or the danger; empty when all is well.
  const std::string& problem() const { return fault.empty() ? danger : fault; }
  bool isIncoming() const;

  /// The other end: the sender of a received message, else the recipient. Empty when the record names none.
  std::string number() const;
  std::string text() const;

  /// How often it may be sent again; 0 when the record does not say.
  std::uint32_t retries() const;

  /// Whether it failed and is not sent again, and whether `veldctl seen` has marked it.
  bool hasFailedForGood() const;
  bool isSeen() const;

  /// When it was received, or else when it came into its folder.
  std::time_t time() const;
};

/// The key that `veldctl seen` adds to a record.
constexpr char seenKey[] = "seen";

/// Fills `fault`, `danger`, `record` and `content` from what the file holds.
void readRecord(Message& message, const std::string& content);
