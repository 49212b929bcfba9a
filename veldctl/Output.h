#pragma once

#include <json/json.h>

#include <string>

/// What veldctl prints. No message text can move the cursor of a terminal or forge a line.
namespace Output {

/// An exit status as monitoring systems read it.
enum Verdict : int { Well = 0, Look = 1, Ill = 2 };

enum class Form { Text, Json, Prometheus };

/// Prints what was looked at, a line each: texts for people, numbers for machines.
struct Report {
  const Form form;
  Verdict worst = Well;

  /// `metric` is the name of the number `value`, with its label if it has one. Either text or metric may be
  /// empty.
  void add(Verdict verdict, const std::string& text, const std::string& metric = "", std::int64_t value = 0);

  /// The same for a number that is well when it is 0, and otherwise stands before its text.
  void count(Verdict verdict, std::int64_t value, const std::string& text, const std::string& metric);
};

/// `value` on one line, in ASCII.
std::string line(const Json::Value& value);

/// A span as people say it: "40 s", "12 min", "3 h", "5 d".
std::string span(std::int64_t seconds);

/// Writes "veldctl: TEXT" to standard error; always true.
bool complain(const std::string& text);
unsigned complaints();  ///< how often that was done

}  // namespace Output
