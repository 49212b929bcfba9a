#include "daemon/PartMerger.h"

#include "storage/MessageRecord.h"

namespace {
namespace Key = MessageRecord::Key;

// Fills the gaps of `parts` from `newParts`; false if it filled none.
bool fillGaps(Json::Value& parts, const Json::Value& newParts) {
  bool filled = false;
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
    if (stored[Key::PartId].asInt() != record[Key::PartId].asInt()) continue;
    Json::Value updated = stored;
    if (!fillGaps(updated[Key::Parts], newParts)) continue;
    updatedMultiparts.push_back(std::move(updated));
    merged = true;
  }
  return merged;
}
