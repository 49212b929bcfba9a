#pragma once

#include <json/json.h>

#include "veldctl/Report.h"

/// Reports faults in the settings, whether the daemon starts with them, and who may send commands.
void reportSettings(Report& report, const Json::Value& settings);
