#include "bench/Report.h"

#include <sys/utsname.h>

#include <ctime>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace {
std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);)
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  return "unknown processor";
}

std::string machine() {
  utsname system{};
  uname(&system);
  return processor() + ", " + system.machine + ", Linux " + system.release;
}

std::string today() {
  const std::time_t now = std::time(nullptr);
  char text[16];
  std::strftime(text, sizeof(text), "%Y-%m-%d", std::localtime(&now));
  return text;
}

std::string rounded(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

struct Row {
  const char* what;
  std::string measured, floor;
  double value;
  double bound;   ///< the target
  bool isAtMost;  ///< true: `bound` is the largest permitted value; false: the smallest

  bool isMet() const { return isAtMost ? value <= bound : value >= bound; }
};
}  // namespace

void Report::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    const std::string& argument = run.run_name.args;
    auto& counters = figures_[run.run_name.function_name + (argument.empty() ? "" : "/" + argument)];
    for (const auto& [name, counter] : run.counters) counters[name] = counter;
  }
  ConsoleReporter::ReportRuns(runs);
}

double Report::figure(const std::string& name, const std::string& counter) const {
  return figures_.at(name).at(counter);
}

bool Report::write(std::ostream& page) const {
  const auto besideFloor = [&](const char* what, const std::string& name) {
    const double ours = figure(name, "us"), floor = figure(name, "floor_us");
    return Row{what, rounded(ours / 1000, 2) + " ms", rounded(floor / 1000, 2) + " ms", ours / floor, 1.10,
               true};
  };
  const auto rate = [&](const char* what, const std::string& name) {
    const double value = figure(name, "MBps");
    return Row{what, rounded(value, 0) + " MB/s", "", value, 100, false};
  };
  const double small = figure("decodeEscapes/16384", "MBps"), large = figure("decodeEscapes/1048576", "MBps");
  const double few = figure("passWithNew/250", "us") / 250, many = figure("passWithNew/1000", "us") / 1000;
  const Row rows[] = {
      besideFloor("Loading a folder of 1,000 records", "loadFolder/1000"),
      besideFloor("Saving a message at a limit of 1,000", "saveUnderALimit/1000"),
      besideFloor("An idle pass", "idlePass"),
      rate("Decoding 1 MB of text with some escapes", "decodeText/1048576"),
      rate("Decoding 1 MB of escapes", "decodeEscapes/1048576"),
      rate("Decoding a million escapes", "decodeEscapes/4000000"),
      {"Decoding each byte of 1 MB; floor: of 16 KB", rounded(1000 / large, 2) + " ns",
       rounded(1000 / small, 2) + " ns", small / large, 1.25, true},
      {"Filing each of 1,000 new messages; floor: of 250", rounded(many / 1000, 2) + " ms",
       rounded(few / 1000, 2) + " ms", many / few, 1.25, true},
  };
  page << "| What | Measured | Floor | Ratio or rate | Target | |\n|---|---|---|---|---|---|\n";
  bool allMet = true;
  for (const Row& row : rows) {
    page << "| " << row.what << " | " << row.measured << " | " << row.floor << " | " << rounded(row.value, 2)
         << " | " << (row.isAtMost ? "at most " : "at least ") << rounded(row.bound, row.isAtMost ? 2 : 0)
         << " | " << (row.isMet() ? "met" : "MISSED") << " |\n";
    allMet = allMet && row.isMet();
  }
  page << "\nMeasured on " << today() << ": " << machine() << ".\n";
  return allMet;
}

void Report::writePoints(const std::string& name, std::ostream& points) const {
  std::map<unsigned long, double> sorted;
  for (const auto& [key, counters] : figures_)
    if (key.rfind(name + "/", 0) == 0)
      sorted[std::stoul(key.substr(name.size() + 1))] = counters.at("us") / 1000;
  for (const auto& [argument, milliseconds] : sorted) points << argument << " " << milliseconds << "\n";
}
