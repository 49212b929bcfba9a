#include "storage/MessageRecord.h"

#include "storage/MessageStatus.h"

namespace MessageRecord {

bool has(const Json::Value& record, const char* key) { return record.isObject() && record.isMember(key); }

const Json::Value& member(const Json::Value& record, const char* key) {
  return record.isObject() ? record[key] : Json::Value::nullSingleton();
}

std::string guid(const Json::Value& record) {
  const Json::Value& value = member(record, Key::Guid);
  return value.isConvertibleTo(Json::stringValue) ? value.asString() : "";
}

}  // namespace MessageRecord

const char* MessageStatus::text(int status) {
  switch (status) {
    case Received:
      return "received";
    case Sending:
      return "sending";
    case Sent:
      return "sent";
    case Failed:
      return "failed";
    default:
      return "unknown";
  }
}
