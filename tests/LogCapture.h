#pragma once

#include <gtest/gtest.h>

#include <string>

/// Collects standard error, where the log goes, and standard output. The first text() or echo() ends this.
class LogCapture {
 public:
  LogCapture() {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
  }
  ~LogCapture() { stop(); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// Returns every line that was logged.
  std::string text() {
    stop();
    return log_;
  }

  /// Returns the standard output.
  std::string echo() {
    stop();
    return echo_;
  }

 private:
  void stop() {
    if (stopped_) return;
    stopped_ = true;
    log_ = testing::internal::GetCapturedStderr();
    echo_ = testing::internal::GetCapturedStdout();
  }

  bool stopped_ = false;
  std::string log_, echo_;
};
