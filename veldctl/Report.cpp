#include "veldctl/Report.h"

#include <algorithm>
#include <iostream>

#include "veldctl/Output.h"

namespace {
void printForPrometheus(const Metric& metric) {
  if (metric.name.empty()) return;
  std::string labels;
  for (const auto& [name, value] : metric.labels)
    labels.append(labels.empty() ? "{" : ",").append(name).append("=\"").append(value).append("\"");
  std::cout << "veld_" << metric.name << labels << (labels.empty() ? " " : "} ") << metric.value << '\n';
}

void printAsJson(Verdict verdict, const std::string& text, const Metric& metric, Json::Value row) {
  row["verdict"] = verdict;
  row["text"] = text;
  if (!metric.name.empty()) {
    row["metric"] = metric.name;
    row["value"] = Json::Int64(metric.value);
  }
  for (const auto& [name, value] : metric.labels) row[name] = value;
  std::cout << Output::line(row) << '\n';
}
}  // namespace

void Report::add(Verdict verdict, const std::string& text, const Metric& metric, const Json::Value& more) {
  constexpr const char* verdicts[] = {"well  ", "look  ", "ILL   "};
  worst_ = std::max(worst_, verdict);
  if (form_ == Form::Prometheus) printForPrometheus(metric);
  if (form_ == Form::Json) printAsJson(verdict, text, metric, more);
  if (form_ == Form::Text && !text.empty()) std::cout << verdicts[verdict] << Output::printable(text) << '\n';
}

void Report::count(Verdict verdict, const std::string& text, const Metric& metric, const Json::Value& more) {
  const bool isNone = metric.value == 0;
  add(isNone ? Well : verdict, isNone ? "" : std::to_string(metric.value) + " " + text, metric, more);
}
