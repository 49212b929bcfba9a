#pragma once

#include <json/json.h>

#include <vector>

/// Groups the parts of concatenated messages among the records of one receive call.
///
/// Records without "part-id" come first, in their order. One record per concatenation reference follows, in
/// ascending order: the first part that arrived, with all texts in "parts" and joinParts applied. Parts with
/// the same reference form one message; the sender is not compared. If a part comes twice, the later text
/// wins.
std::vector<Json::Value> joinMultipartMessages(std::vector<Json::Value> records);

/// Sets the "message" of a grouped record to the texts of its "parts", with " ... " for a missing one. If
/// none is missing, removes "parts", "part-id", "part-index" and "part-count": the record is complete. Does
/// not change a record without "part-id" or without an array of "parts".
void joinParts(Json::Value& record);
