#pragma once

#include <string>

#include "veldctl/Folders.h"
#include "veldctl/Output.h"

/// Whether the daemon runs.
bool isDaemonRunning();

/// Reports whether the daemon and the modem are well: by /proc, the folders and the local API, whose settings
/// are null when it has not answered. `staging` is where files are written before they are moved.
void reportStatus(Output::Report& report, const Folders& folders, const std::string& staging,
                  const Json::Value& settings);

/// Reports what is wrong with what the daemon depends on: the settings, the back-off timers, the tool, the
/// folders and their modes, the send log.
void reportCheck(Output::Report& report, const Folders& folders, const std::string& sendLog,
                 const Json::Value& settings);
