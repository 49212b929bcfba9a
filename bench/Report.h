#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>

/// Prints each benchmark at its end, keeps its figures, and compares them with their targets.
class Report : public benchmark::ConsoleReporter {
 public:
  Report() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override;

  /// Writes the table of figures and targets, the machine and the date. Returns false if a target is missed.
  bool write(std::ostream& page) const;

  /// Writes a line for each run of the benchmark `name`: its argument and its time in milliseconds.
  void writePoints(const std::string& name, std::ostream& points) const;

 private:
  double figure(const std::string& name, const std::string& counter) const;

  std::map<std::string, std::map<std::string, double>> figures_;  ///< by "NAME/ARGUMENT" and counter
};
