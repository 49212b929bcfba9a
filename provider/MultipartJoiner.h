#pragma once

#include <json/json.h>

#include <vector>

/// Joins the parts of concatenated messages among the records of one receive call.
///
/// The result begins with the records without "part-id", in their order. One record for each concatenation
/// reference ("part-id") follows, in ascending order of the references. This record has the keys of the part
/// that arrived first and, after joinParts, the texts of all parts. Senders are not compared. If a part
/// arrives twice, its later text is used.
std::vector<Json::Value> joinMultipartMessages(std::vector<Json::Value> records);

/// Sets "message" to the joined texts of "parts", with " ... " for each missing part. If no part is missing,
/// also removes "parts", "part-id", "part-index" and "part-count": the record is then complete. Changes only
/// a record that has "part-id" and an array in "parts".
void joinParts(Json::Value& record);
