#pragma once

#include <json/json.h>

#include <string>

#include "veldctl/Folders.h"
#include "veldctl/Output.h"

/// Whether the daemon runs.
bool isDaemonRunning();

/// Whether the daemon and the modem are well: by /proc, the folders and the local API. `settings` are those
/// of the API, null when it has not answered; `staging` is where files are written before they are moved.
Output::Findings statusOf(const Folders& folders, const std::string& staging, const Json::Value& settings);
