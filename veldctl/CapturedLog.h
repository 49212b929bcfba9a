#pragma once

#include <functional>
#include <string>
#include <vector>

/// Runs `work` and returns the lines that `work` logs, such as "[ERROR] Exit: ...". The lines do not reach
/// standard error. Does not catch the exceptions of `work`.
std::vector<std::string> capturedLog(const std::function<void()>& work);
