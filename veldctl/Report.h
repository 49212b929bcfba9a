#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The result of an item, and the exit status for monitoring systems: good, needs attention, broken.
enum Verdict : int { Well = 0, Look = 1, Ill = 2 };

/// A number, for programs.
struct Figure {
  std::string name;  ///< empty if there is no number
  std::int64_t value = 0;
  std::vector<std::pair<std::string, std::string>> labels;
};

/// The output of `status` and `check`, one line for each item.
class Report {
 public:
  enum class Form { Text, Json, Prometheus };

  explicit Report(Form form) : form_(form) {}

  /// Prints one line: as text unless `text` is empty, for Prometheus if there is a figure, as JSON with
  /// `more`.
  void add(Verdict verdict, const std::string& text, const Figure& figure = {},
           const Json::Value& more = Json::objectValue);

  /// Reports a count: Well and without a text if it is 0, else `verdict` and "COUNT TEXT".
  void count(Verdict verdict, const std::string& text, const Figure& figure,
             const Json::Value& more = Json::objectValue);

  /// Returns the worst verdict so far.
  Verdict worst() const { return worst_; }

 private:
  const Form form_;
  Verdict worst_ = Well;
};
