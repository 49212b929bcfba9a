#include "veldctl/Output.h"

#include <algorithm>
#include <iostream>

#include "support/Text.h"

static unsigned complained = 0;

void Output::Report::add(Verdict verdict, const std::string& text, const std::string& metric,
                         std::int64_t value) {
  constexpr const char* verdicts[] = {"well  ", "look  ", "ILL   "};
  worst = std::max(worst, verdict);
  if (form == Form::Prometheus && !metric.empty()) std::cout << "veld_" << metric << ' ' << value << '\n';
  if (form == Form::Text && !text.empty())
    std::cout << verdicts[verdict] << Orvel::Text::printable(text) << '\n';
  if (form != Form::Json) return;
  Json::Value row;
  row["verdict"] = verdict;
  row["text"] = text;
  row["metric"] = metric;
  row["value"] = Json::Int64(value);
  std::cout << line(row) << '\n';
}

void Output::Report::count(Verdict verdict, std::int64_t value, const std::string& text,
                           const std::string& metric) {
  add(value > 0 ? verdict : Well, value > 0 ? std::to_string(value) + text : "", metric, value);
}

std::string Output::line(const Json::Value& value) {
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  return Json::writeString(writer, value);
}

std::string Output::span(std::int64_t seconds) {
  if (seconds < 120) return std::to_string(seconds) + " s";
  if (seconds < 7200) return std::to_string(seconds / 60) + " min";
  return seconds < 172800 ? std::to_string(seconds / 3600) + " h" : std::to_string(seconds / 86400) + " d";
}

bool Output::complain(const std::string& text) {
  std::cerr << "veldctl: " << Orvel::Text::printable(text) << std::endl;
  return ++complained > 0;
}

unsigned Output::complaints() { return complained; }
