#pragma once

#include <string>

#include "veldctl/Message.h"

/// What has happened to a message.
struct Event {
  std::string what;  ///< "received", "completed", "sent" or "failed"
  Message message;
};

/// The members of an event for programs: event, guid, time, record.
Json::Value toJson(const Event& event);

/// One line for people: time, what happened, number, text.
std::string toText(const Event& event);
