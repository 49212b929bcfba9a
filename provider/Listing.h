#pragma once

#include <json/json.h>

#include <functional>
#include <string>
#include <vector>

/// The messages of a listing, which is the output of the tool's `sms list read`.
struct Listing {
  std::vector<Json::Value> records;  ///< one per message that has a sender, in the listing's order
  bool foundMessage = false;         ///< true if there was a message, with or without a sender
};

/// Parses a listing. An element of `lines` is a line or a piece of a long line, with or without a line feed.
///
/// Each line with "index" begins a message. The message's first line with "addr:" but without "smsc-addr:"
/// gives the sender. The message's first line with "user-data:" gives the text (see UserData.h). These
/// markers match anywhere in a line and are case-sensitive. A message without a sender is logged and skipped.
/// A message without "user-data:" gives a record without "message".
///
/// A "guid" is the local time in 14 digits, followed by the record's number in the listing, from 00. A number
/// is skipped if `isTaken` returns true for the guid with this number.
Listing parseListing(
    const std::vector<std::string>& lines,
    const std::function<bool(const std::string& guid)>& isTaken = [](const std::string&) { return false; });
