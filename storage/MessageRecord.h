#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>

/// The message record: one JSON object per SMS, whose "guid" is also the name of its file. Every file in a
/// status folder counts as a record, so the functions below accept any JSON value and never change it.
namespace MessageRecord {
/// The keys of a record that the daemon reads or writes.
namespace Key {
constexpr char Guid[] = "guid";             ///< string; YYYYmmddHHMMSS and an ordinal when the daemon made it
constexpr char Status[] = "status";         ///< string; MessageStatus::text, informative only
constexpr char Source[] = "source";         ///< string; the sender's number
constexpr char Message[] = "message";       ///< string; the text, UTF-8
constexpr char Timestamp[] = "timestamp";   ///< string; local time of reception, YYYY/mm/dd HH:MM:SS
constexpr char Recipient[] = "recipient";   ///< string; the destination number
constexpr char Retries[] = "retries";       ///< integer; send attempts that a failed record may still make
constexpr char PartId[] = "part-id";        ///< integer; concatenation reference, 0 to 65535
constexpr char PartIndex[] = "part-index";  ///< integer; number of the part, from 0
constexpr char PartCount[] = "part-count";  ///< integer; number of parts, 1 to 255
constexpr char Parts[] = "parts";           ///< array of strings by part number, null where one is missing
constexpr char IsSMSCommand[] = "isSMSCommand";  ///< boolean; true when the message acted as a command
}  // namespace Key

/// Whether `record` is an object that has `key`.
bool has(const Json::Value& record, const char* key);

/// The member of `record` under `key`; JSON null if there is none or `record` is not an object.
const Json::Value& member(const Json::Value& record, const char* key);

/// The "guid" as text; empty if there is none or if it is an array or an object.
std::string guid(const Json::Value& record);

/// The value of "retries" after one more failed send; 0 if it was not a number, or less than 1.
std::uint32_t retriesAfterFailure(const Json::Value& record);

/// Parses the content of a file. False, with a text in `errors`, if it is not JSON or is nested too deep.
bool parse(const std::string& text, Json::Value& record, std::string* errors = nullptr);

/// Whether the file at `path` holds `record`; "status" and "isSMSCommand" are not compared.
bool isInFile(const Json::Value& record, const std::string& path);
}  // namespace MessageRecord
