#pragma once

#include <json/json.h>

#include <cstdint>
#include <ctime>
#include <string>

/// One file of a message folder.
struct Message {
  int status = 0;            ///< its folder, see MessageStatus
  std::string name;          ///< of the file; the guid if the file is good
  Json::Value record;        ///< null if the file does not hold JSON
  std::string content;       ///< of a file that does not hold a JSON object
  std::string fault;         ///< why veld cannot handle the file; empty if it can
  std::string danger;        ///< why `veldctl send` would refuse the recipient; empty if it would not
  std::int64_t changed = 0;  ///< when the file was written, in nanoseconds since 1970

  /// Returns the fault, or else the danger; empty if there is neither.
  const std::string& problem() const { return fault.empty() ? danger : fault; }
  std::time_t changedSecond() const { return static_cast<std::time_t>(changed / 1'000'000'000); }
  bool isIncoming() const;

  /// Returns the sender of a received message, and else the recipient. Empty if the record has none.
  std::string number() const;
  std::string text() const;

  /// Returns the number of retries left; 0 if the record has none.
  std::uint32_t retries() const;

  bool hasFailedPermanently() const;  ///< it has failed and will not be retried
  bool isSeen() const;                ///< `veldctl seen` has marked it

  /// Returns the time of receipt or, if there is none, the time of the file.
  std::time_t time() const;
};

/// The key that `veldctl seen` adds to a record.
constexpr char seenKey[] = "seen";

/// Returns a member of a record as text; empty if it is missing or not a text.
std::string textOf(const Json::Value& record, const char* key);

/// Fills `fault`, `danger`, `record` and `content` from the content of a file.
void readRecord(Message& message, const std::string& content);
