#pragma once

#include <string>

#include "veldctl/Command.h"

/// Handles the message with this guid. Returns an error text, empty on success. May throw std::system_error.
using Act = std::string (*)(const Request& request, const std::string& guid);

/// Runs `act` for each guid of the command line. Prints "GUID: FAULT" for each failure, or with --json an
/// object with "guid" and "fault" for each guid. Returns the exit status.
int forEachGuid(const Request& request, Act act);

/// Finds the failed message with this guid. If there is none, `error` says why: there is no message with this
/// guid, the message is in another folder, or veld cannot handle the file.
Lookup findFailed(const Folders& folders, const std::string& guid);

constexpr char noSuchMessage[] = "there is no such message";
