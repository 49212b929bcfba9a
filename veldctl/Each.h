#pragma once

#include <string>

#include "veldctl/Command.h"

/// What a command does with one guid. Returns what went wrong, or an empty text; throws std::system_error for
/// the same.
using Act = std::string (*)(const Request& request, const std::string& guid);

/// Runs `act` for each guid on the command line. Prints "GUID: FAULT" for each that failed, or with --json an
/// object with "guid" and "fault" for every one. Returns the exit status.
int forEachGuid(const Request& request, Act act);

/// The failed message of that guid. Without one, `error` says why: there is none, it is in another folder, or
/// veld cannot handle it.
Lookup findFailed(const Folders& folders, const std::string& guid);

constexpr char noSuchMessage[] = "there is no such message";
