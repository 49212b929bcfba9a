#pragma once

#include <json/json.h>

#include <vector>

/// Groups the parts of concatenated messages among the records of one receive call.
///
/// Records without "part-id" come first, in their order; then one record per concatenation reference,
/// ascending, made from the first part that arrived, with the texts of all in "parts" and joinParts applied.
/// Parts are told apart by the reference alone, not by the sender; of a part that comes twice, the later text
/// counts.
std::vector<Json::Value> joinMultipartMessages(std::vector<Json::Value> records);

/// Sets the "message" of a grouped record to the texts of its "parts", " ... " standing for a missing one.
/// When none is missing, "parts", "part-id", "part-index" and "part-count" are removed: the record is
/// complete. A record without "part-id", or without an array of "parts", stays as it is.
void joinParts(Json::Value& record);
