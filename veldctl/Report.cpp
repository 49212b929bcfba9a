#include "veldctl/Report.h"

#include <algorithm>
#include <iostream>

#include "veldctl/Output.h"

namespace {

void printForPrometheus(const Figure& figure) {
  if (figure.name.empty()) return;
  std::string labels;
  for (const auto& [name, value] : figure.labels)
    labels.append(labels.empty() ? "{" : ",").append(name).append("=\"").append(value).append("\"");
  std::cout << "veld_" << figure.name << labels << (labels.empty() ? " " : "} ") << figure.value << '\n';
}

void printAsJson(Verdict verdict, const std::string& text, const Figure& figure, Json::Value row) {
  row["verdict"] = verdict;
  row["text"] = text;
  if (!figure.name.empty()) {
    row["metric"] = figure.name;
    row["value"] = Json::Int64(figure.value);
  }
  for (const auto& [name, value] : figure.labels) row[name] = value;
  std::cout << Output::line(row) << '\n';
}

}  // namespace

void Report::add(Verdict verdict, const std::string& text, const Figure& figure, const Json::Value& more) {
  constexpr const char* verdicts[] = {"well  ", "look  ", "ILL   "};
  worst_ = std::max(worst_, verdict);
  if (form_ == Form::Prometheus) printForPrometheus(figure);
  if (form_ == Form::Json) printAsJson(verdict, text, figure, more);
  if (form_ == Form::Text && !text.empty()) std::cout << verdicts[verdict] << Output::printable(text) << '\n';
}

void Report::count(Verdict verdict, const std::string& text, const Figure& figure, const Json::Value& more) {
  const bool isNone = figure.value == 0;
  add(isNone ? Well : verdict, isNone ? "" : std::to_string(figure.value) + " " + text, figure, more);
}
