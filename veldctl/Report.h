#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The answer of `status` and `check`: a line for each thing that was looked at.

/// An exit status as monitoring systems read it.
enum Verdict : int { Well = 0, Look = 1, Ill = 2 };

/// One number, for programs.
struct Figure {
  std::string name;  ///< empty when there is no number to report
  std::int64_t value = 0;
  std::vector<std::pair<std::string, std::string>> labels;
};

class Report {
 public:
  enum class Form { Text, Json, Prometheus };

  explicit Report(Form form) : form_(form) {}

  /// Prints one line. People see none when `text` is empty, Prometheus none without a figure. Programs that
  /// read JSON see the members of `more`, too.
  void add(Verdict verdict, const std::string& text, const Figure& figure = {},
           const Json::Value& more = Json::objectValue);

  /// Reports a count: Well and without a text if it is 0, else `verdict` and "COUNT TEXT".
  void count(Verdict verdict, const std::string& text, const Figure& figure,
             const Json::Value& more = Json::objectValue);

  Verdict worst() const { return worst_; }

 private:
  const Form form_;
  Verdict worst_ = Well;
};
