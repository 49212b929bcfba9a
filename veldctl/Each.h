#pragma once

#include <string>

#include "veldctl/Command.h"

/// Acts on one guid. Returns the fault, empty on success. Throws std::system_error if a system call fails.
using Act = std::string (*)(const Request& request, const std::string& guid);

/// Runs `act` for each guid of the command line. Prints "GUID: FAULT" for each failure, or with --json an
/// object with "guid" and "fault" for each guid. Returns the exit status.
int forEachGuid(const Request& request, Act act);

/// Finds a failed message. Otherwise `error` says that there is no message with this guid, that it is in
/// another folder, or that veld cannot handle its file.
Lookup findFailed(const Folders& folders, const std::string& guid);

constexpr char noSuchMessage[] = "there is no such message";
