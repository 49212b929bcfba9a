#pragma once

#include <string>

#include "veldctl/Folders.h"
#include "veldctl/Output.h"

/// What is wrong with what the daemon depends on: its settings (null when the API has not answered), the
/// back-off timers, the tool, the folders and their modes, the send log.
Output::Findings check(const Folders& folders, const std::string& sendLog, const Json::Value& settings);
