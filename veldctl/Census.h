#pragma once

#include <json/json.h>

#include "veldctl/Folders.h"
#include "veldctl/Report.h"

/// Reports the messages in the folders: how many, against the limits of `settings`, which are null when the
/// local API does not answer; files that are no records; what waits, what failed, and what came and went
/// last.
void reportMessages(Report& report, const Folders& folders, const Json::Value& settings);
