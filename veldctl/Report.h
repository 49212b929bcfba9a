#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The verdict on an item, with the exit statuses of monitoring systems: OK, warning, critical.
enum Verdict : int { Well = 0, Look = 1, Ill = 2 };

/// A number in the output for programs.
struct Metric {
  std::string name;  ///< empty if there is no number
  std::int64_t value = 0;
  std::vector<std::pair<std::string, std::string>> labels;
};

/// The output of `status` and `check`, one line for each item.
class Report {
 public:
  enum class Form { Text, Json, Prometheus };

  explicit Report(Form form) : form_(form) {}

  /// Prints an item in one line. As text, omits an item without `text`; for Prometheus, omits an item without
  /// a metric; as JSON, adds the members of `more`.
  void add(Verdict verdict, const std::string& text, const Metric& metric = {},
           const Json::Value& more = Json::objectValue);

  /// Reports a count: as Well and without a text if the count is 0, otherwise as `verdict` and "COUNT TEXT".
  void count(Verdict verdict, const std::string& text, const Metric& metric,
             const Json::Value& more = Json::objectValue);

  Verdict worst() const { return worst_; }

 private:
  const Form form_;
  Verdict worst_ = Well;
};
