#pragma once

#include <json/json.h>

#include <vector>

/// Merges the parts of a concatenated message that arrive in different passes. Parts belong together when
/// their "part-id" is the same; the sender is not compared.

/// Whether `record` is a part of a concatenated message.
bool isPartOfMultipart(const Json::Value& record);

/// Those of an array of records that are parts, in the same order.
std::vector<Json::Value> collectStoredParts(const Json::Value& records);

/// Fills gaps in the "parts" of the stored records of the same "part-id" with those of `record`, and appends
/// a copy of each stored record that changed to `updatedMultiparts`. False when none did.
bool mergeWithStoredParts(std::vector<Json::Value>& updatedMultiparts, const Json::Value& record,
                          const std::vector<Json::Value>& storedParts);
