#pragma once

#include <json/json.h>

#include "veldctl/Report.h"

/// Reports what is wrong with the settings of the local API: whether the daemon starts with them, and who may
/// send commands.
void reportSettings(Report& report, const Json::Value& settings);
