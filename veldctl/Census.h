#pragma once

#include <json/json.h>

#include "veldctl/Folders.h"
#include "veldctl/Report.h"

/// Reports the number of messages in each folder, the limits, the files that are not records, the waiting and
/// the failed messages, and the last received and sent message. Reports no limits if `settings` is null.
void reportMessages(Report& report, const Folders& folders, const Json::Value& settings);
