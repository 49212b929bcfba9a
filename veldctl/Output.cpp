#include "veldctl/Output.h"

#include <algorithm>
#include <iostream>

#include "support/Text.h"

static unsigned complained = 0;

Output::Verdict Output::print(const Findings& findings, Form form) {
  constexpr const char* verdicts[] = {"well  ", "look  ", "ILL   "};
  Verdict worst = Well;
  for (const Findings::Row& row : findings.rows) {
    worst = std::max(worst, row.verdict);
    if (form == Form::Prometheus && !row.metric.empty())
      std::cout << "veld_" << row.metric << ' ' << row.value << '\n';
    if (form == Form::Text && !row.text.empty())
      std::cout << verdicts[row.verdict] << Orvel::Text::printable(row.text) << '\n';
    if (form != Form::Json) continue;
    Json::Value object;
    object["verdict"] = row.verdict;
    object["text"] = row.text;
    object["metric"] = row.metric;
    object["value"] = Json::Int64(row.value);
    std::cout << line(object) << '\n';
  }
  return worst;
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
