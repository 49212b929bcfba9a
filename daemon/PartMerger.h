#pragma once

#include <json/json.h>

#include <vector>

/// Merges the parts of a concatenated message that arrive in different passes. Parts belong together when
/// their "part-id" is the same; the sender is not compared.

/// Whether `record` is a part of a concatenated message.
bool isPartOfMultipart(const Json::Value& record);

/// The records of an array that are parts, in the same order.
std::vector<Json::Value> collectStoredParts(const Json::Value& records);

/// Fills gaps in the stored records of the same "part-id" with the "parts" of `record`. Appends a copy of
/// each changed record to `updatedMultiparts`; false if none changed. Throws the JSON library's exception for
/// a "part-id" or "parts" of a wrong type.
bool mergeWithStoredParts(std::vector<Json::Value>& updatedMultiparts, const Json::Value& record,
                          const std::vector<Json::Value>& storedParts);
