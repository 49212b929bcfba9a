#pragma once

#include <gtest/gtest.h>

#include <string>

/// Collects what is logged, from its construction to the call of text().
class LogCapture {
 public:
  LogCapture() { testing::internal::CaptureStderr(); }
  ~LogCapture() {
    if (!read_) testing::internal::GetCapturedStderr();
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// Every line so far; call it once.
  std::string text() {
    read_ = true;
    return testing::internal::GetCapturedStderr();
  }

 private:
  bool read_ = false;
};
