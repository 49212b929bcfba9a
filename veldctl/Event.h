#pragma once

#include <string>

#include "veldctl/Message.h"

/// A change of a message, which `veldctl follow` reports.
struct Event {
  std::string kind;  ///< "received", "completed" (its last part has arrived), "sent" or "failed"
  Message message;
};

/// Returns the event as a JSON object: event, guid, time, record.
Json::Value toJson(const Event& event);

/// Returns the event as one line of text: time, kind, number, text.
std::string toText(const Event& event);
