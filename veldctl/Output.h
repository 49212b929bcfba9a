#pragma once

#include <json/json.h>

#include <string>
#include <vector>

/// What veldctl prints. No message text can move the cursor of a terminal or forge a line.
namespace Output {

/// An exit status as monitoring systems read it.
enum Verdict : int { Well = 0, Look = 1, Ill = 2 };

/// What was looked at: a text for people, a number for machines, or both.
struct Findings {
  struct Row {
    Verdict verdict;
    std::string text, metric;
    std::int64_t value;
  };
  std::vector<Row> rows;

  /// `metric` is the name of the number `value`, with its label if it has one.
  void add(Verdict verdict, const std::string& text, const std::string& metric = "", std::int64_t value = 0) {
    rows.push_back({verdict, text, metric, value});
  }
};

enum class Form { Text, Json, Prometheus };

/// Prints the findings, a line each; the worst verdict.
Verdict print(const Findings& findings, Form form);

/// `value` on one line, in ASCII.
std::string line(const Json::Value& value);

/// A span as people say it: "40 s", "12 min", "3 h", "5 d".
std::string span(std::int64_t seconds);

/// Writes "veldctl: TEXT" to standard error; always true.
bool complain(const std::string& text);
unsigned complaints();  ///< how often that was done

}  // namespace Output
