#pragma once

#include <optional>
#include <string>

#include "veldctl/Folders.h"

/// The failed message of that guid, for `retry` and `seen`. None, with a complaint that says why, when there
/// is none, when it is in another folder, or when veld cannot handle it.
std::optional<Message> findFailed(const Folders& folders, const std::string& guid);
