#pragma once

#include <json/json.h>

#include "veldctl/Folders.h"
#include "veldctl/Report.h"

/// Reports the number of messages in each folder and its limit, files that are not records, waiting and
/// failed messages, and the last received and sent one. `settings` holds the limits; it may be null.
void reportMessages(Report& report, const Folders& folders, const Json::Value& settings);
