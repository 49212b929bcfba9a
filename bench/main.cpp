// veld-bench FOLDER: runs the benchmarks, and writes the table and the points of the plots to FOLDER. Exits
// with status 0 if all targets are met.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/Bench.h"
#include "bench/Report.h"

namespace {
constexpr char toolFolder[] = "/tmp/bin";

// Creates a tool `sms` that needs little time, so that the figures show the time of the daemon itself.
void makeTool() {
  const std::string tool = std::string(toolFolder) + "/sms";
  std::filesystem::create_directories(toolFolder);
  std::ofstream(tool) << "#!/bin/sh\n[ \"$2\" != read ] || [ \"$1\" != list ] || exec cat " << listingFile
                      << "\n";
  std::filesystem::permissions(tool, std::filesystem::perms::all);
  setenv("PATH", (std::string(toolFolder) + ":" + std::getenv("PATH")).c_str(), 1);
}
}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: private-gateway veld-bench FOLDER\n");
    return 2;
  }
  const std::string folder = argv[1];
  makeTool();
  // Discards the daemon's log lines. The daemon still formats them.
  if (std::freopen("/dev/null", "w", stderr) == nullptr) return EXIT_FAILURE;
  Report report;
  benchmark::RunSpecifiedBenchmarks(&report);

  for (const char* const name : {"passWithStored", "passWithNew", "passIntoEmptyStore"}) {
    std::ofstream points(folder + "/" + name);
    report.writePoints(name, points);
  }
  std::ofstream table(folder + "/table.md");
  return report.write(table) ? EXIT_SUCCESS : EXIT_FAILURE;
}
