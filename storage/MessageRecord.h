#pragma once

#include <json/json.h>

#include <cstdint>
#include <istream>
#include <string>

/// The message record: one JSON object per SMS, whose "guid" is also the name of its file. Whatever lies in a
/// status folder counts as a record, so the calls below take any JSON value, and none of them changes it.
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

/// The member of `record` under `key`; JSON null when there is none or `record` is no object.
const Json::Value& member(const Json::Value& record, const char* key);

/// The "guid" as text; empty when there is none or it is an array or an object, which have no text form.
std::string guid(const Json::Value& record);

/// What is left of "retries" after one more send that failed; 0 when it is no number, or less than 1 before.
std::uint32_t retriesAfterFailure(const Json::Value& record);

/// Reads the content of a file; false, with a text in `errors`, when it is no JSON or is nested too deep.
bool parse(std::istream& stream, Json::Value& record, std::string& errors);

/// Whether the file at `path` holds the message of `record`, whatever its status and whether it acted as a
/// command.
bool isInFile(const Json::Value& record, const std::string& path);

}  // namespace MessageRecord
