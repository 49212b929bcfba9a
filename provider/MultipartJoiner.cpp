#include "provider/MultipartJoiner.h"

#include <map>
#include <string>
#include <utility>

#include "storage/MessageRecord.h"

namespace Key = MessageRecord::Key;

std::vector<Json::Value> joinMultipartMessages(std::vector<Json::Value> records) {
  std::vector<Json::Value> joined;
  std::map<int, Json::Value> groups;
  for (Json::Value& record : records) {
    if (!MessageRecord::has(record, Key::PartId)) {
      joined.push_back(std::move(record));
      continue;
    }
    const auto [group, isNew] = groups.try_emplace(record[Key::PartId].asInt(), record);
    Json::Value& parts = group->second[Key::Parts];
    if (isNew) {
      parts = Json::Value(Json::arrayValue);
      parts.resize(MessageRecord::member(record, Key::PartCount).asUInt());
    }
    parts[MessageRecord::member(record, Key::PartIndex).asUInt()] =
        MessageRecord::member(record, Key::Message).asString();
  }
  for (auto& [reference, group] : groups) {
    joinParts(group);
    joined.push_back(std::move(group));
  }
  return joined;
}

void joinParts(Json::Value& record) {
  if (!MessageRecord::has(record, Key::PartId) || !MessageRecord::member(record, Key::Parts).isArray())
    return;
  std::string text;
  bool complete = true;
  const Json::Value& parts = MessageRecord::member(record, Key::Parts);
  for (Json::ArrayIndex i = 0; i < parts.size(); ++i) {  // an iterator would skip missing parts
    const Json::Value& part = parts[i];
    complete = complete && !part.isNull();
    text += part.isNull() ? " ... " : part.asString();
  }
  record[Key::Message] = text;
  if (!complete) return;
  for (const char* const key : {Key::Parts, Key::PartId, Key::PartIndex, Key::PartCount})
    record.removeMember(key);
}
