#include "veldctl/Message.h"

#include <optional>
#include <sstream>

#include "daemon/RetryStep.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/ShortMessage.h"

namespace {
namespace Key = MessageRecord::Key;

std::string faultOf(const Message& message) {
  if (!message.record.isObject()) return "it is not a JSON object";
  if (MessageRecord::guid(message.record) != message.name) return "its guid is not the name of its file";
  for (const char* const key : {Key::Message, Key::Recipient, Key::Source})
    if (!MessageRecord::member(message.record, key).isConvertibleTo(Json::stringValue))
      return std::string("its ") + key + " is not a text";
  return "";
}

std::string dangerOf(const Message& message) {
  if (message.isIncoming() || ShortMessage::isNumber(message.number())) return "";
  if (message.number().empty()) return "it has no recipient";
  return "its recipient is not a number: " + message.number();
}

std::optional<std::time_t> parseTimestamp(const std::string& text) {
  std::tm time{};
  time.tm_isdst = -1;
  const char* const end = strptime(text.c_str(), "%Y/%m/%d %H:%M:%S", &time);
  if (end == nullptr || *end != '\0') return std::nullopt;
  const std::time_t received = std::mktime(&time);
  return received == -1 ? std::nullopt : std::optional(received);
}

// Joins the lines of the JSON parser's error text. Omits the "*" before each line.
std::string syntaxFault(const std::string& errors) {
  std::istringstream words(errors);
  std::string text = "it is not JSON:";
  for (std::string word; words >> word;)
    if (word != "*") text += " " + word;
  return text;
}
}  // namespace

bool Message::isIncoming() const { return status == MessageStatus::Received; }

std::string Message::number() const { return textOf(record, isIncoming() ? Key::Source : Key::Recipient); }

std::string Message::text() const { return textOf(record, Key::Message); }

std::uint32_t Message::retries() const {
  const Json::Value& value = MessageRecord::member(record, Key::Retries);
  return value.isUInt() ? value.asUInt() : 0;
}

bool Message::hasFailedPermanently() const { return status == MessageStatus::Failed && !mayRetry(record); }

bool Message::isSeen() const { return MessageRecord::member(record, seenKey) == true; }

std::time_t Message::time() const {
  if (!isIncoming()) return changedSecond();
  return parseTimestamp(textOf(record, Key::Timestamp)).value_or(changedSecond());
}

std::string textOf(const Json::Value& record, const char* key) {
  const Json::Value& value = MessageRecord::member(record, key);
  return value.isConvertibleTo(Json::stringValue) ? value.asString() : "";
}

void readRecord(Message& message, const std::string& content) {
  if (!MessageRecord::parse(content, message.record, &message.fault)) {
    message.record = Json::nullValue;
    message.fault = syntaxFault(message.fault);
  } else {
    message.fault = faultOf(message);
  }
  if (!message.record.isObject()) message.content = content;
  if (message.fault.empty()) message.danger = dangerOf(message);
}
