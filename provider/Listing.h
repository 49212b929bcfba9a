#pragma once

#include <json/json.h>

#include <functional>
#include <string>
#include <vector>

/// The messages in the listing that the tool prints.
struct Listing {
  std::vector<Json::Value> records;  ///< one per message that has a sender, in the listing's order
  bool foundMessage = false;         ///< whether there was a message, even one without a sender
};

/// Parses `lines`, each a line of the listing or a piece of an over-long one, with or without its line feed.
///
/// A line that holds "index" begins a message, which ends at the next such line. Its first line with "addr:"
/// but not "smsc-addr:" gives the sender, its first with "user-data:" the text (see UserData.h).
/// A marker matches anywhere in a line, case-sensitively. A message without a sender is logged and skipped;
/// one without "user-data:" has no "message".
///
/// The "guid" is the time of parsing, in seconds, and the ordinal of the message in the listing, from 00. An
/// ordinal is skipped if `isTaken` returns true for its guid.
Listing parseListing(
    const std::vector<std::string>& lines,
    const std::function<bool(const std::string& guid)>& isTaken = [](const std::string&) { return false; });
