#pragma once

#include <functional>
#include <string>
#include <vector>

/// The lines that the daemon's own code logs while `work` runs, as in "[ERROR] Exit: ...". They do not reach
/// standard error. What `work` throws passes through.
std::vector<std::string> wordsOfDaemon(const std::function<void()>& work);
