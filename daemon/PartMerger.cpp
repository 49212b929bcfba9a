#include "daemon/PartMerger.h"

#include <algorithm>

#include "storage/MessageRecord.h"

namespace {

namespace Key = MessageRecord::Key;

// An invalid stored record must not block a new message: a "part-id" that is not a number matches nothing,
// and "parts" that are not an array of values with a text form have no gaps.
bool hasPartId(const Json::Value& stored, int partId) {
  return stored[Key::PartId].isConvertibleTo(Json::intValue) && stored[Key::PartId].asInt() == partId;
}

bool isJoinable(const Json::Value& parts) {
  return parts.isArray() && std::all_of(parts.begin(), parts.end(), [](const Json::Value& part) {
           return part.isConvertibleTo(Json::stringValue);
         });
}

// Fills the gaps of `parts` from `newParts`; false if it filled none.
bool fillGaps(Json::Value& parts, const Json::Value& newParts) {
  bool filled = false;
  if (!isJoinable(parts)) return filled;
  for (Json::ArrayIndex i = 0; i < parts.size() && i < newParts.size(); ++i) {
    if (!parts[i].isNull() || newParts[i].isNull()) continue;
    parts[i] = newParts[i];
    filled = true;
  }
  return filled;
}

}  // namespace

bool isPartOfMultipart(const Json::Value& record) { return MessageRecord::has(record, Key::PartId); }

std::vector<Json::Value> collectStoredParts(const Json::Value& records) {
  std::vector<Json::Value> parts;
  for (const Json::Value& record : records)
    if (isPartOfMultipart(record)) parts.push_back(record);
  return parts;
}

bool mergeWithStoredParts(std::vector<Json::Value>& updatedMultiparts, const Json::Value& record,
                          const std::vector<Json::Value>& storedParts) {
  bool merged = false;
  const Json::Value& newParts = MessageRecord::member(record, Key::Parts);
  for (const Json::Value& stored : storedParts) {
    if (!hasPartId(stored, record[Key::PartId].asInt())) continue;
    Json::Value updated = stored;
    if (!fillGaps(updated[Key::Parts], newParts)) continue;
    updatedMultiparts.push_back(std::move(updated));
    merged = true;
  }
  return merged;
}
