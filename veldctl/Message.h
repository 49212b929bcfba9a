#pragma once

#include <json/json.h>

#include <cstdint>
#include <ctime>
#include <string>

/// One file of a message folder.
struct Message {
  int status = 0;            ///< its folder, see MessageStatus
  std::string name;          ///< the name of the file, which is the guid unless the file is faulty
  Json::Value record;        ///< null if the file does not hold JSON
  std::string content;       ///< the content of the file; empty if the content is a JSON object
  std::string fault;         ///< why veld cannot handle the file; empty if veld can
  std::string danger;        ///< why the recipient is not a valid number; empty if the number is valid
  std::int64_t changed = 0;  ///< when the file was written, in nanoseconds since 1970

  /// Returns `fault`, or `danger` if `fault` is empty.
  const std::string& problem() const { return fault.empty() ? danger : fault; }
  std::time_t changedSecond() const { return static_cast<std::time_t>(changed / 1'000'000'000); }
  bool isIncoming() const;

  /// Returns the sender of a received message, or the recipient of any other message; empty if missing.
  std::string number() const;
  std::string text() const;

  /// Returns the number of retries left; 0 if the record has none.
  std::uint32_t retries() const;

  bool hasFailedPermanently() const;  ///< true if the message has failed and will not be retried
  bool isSeen() const;                ///< true if `veldctl seen` has marked the message

  /// Returns the time of receipt; if the record has no such time, the modification time of the file.
  std::time_t time() const;
};

/// The key that `veldctl seen` adds to a record.
constexpr char seenKey[] = "seen";

/// Returns a member of a record as text; empty if it is missing or not a text.
std::string textOf(const Json::Value& record, const char* key);

/// Fills `fault`, `danger`, `record` and `content` of the message from the content of its file.
void readRecord(Message& message, const std::string& content);
