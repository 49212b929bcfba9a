// veld-faults: what the daemon makes of faults, in a private gateway; see scripts/faults. The status is 0
// when nothing was lost or repeated outside of the windows that are known.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <vector>

#include "faults/Accidents.h"
#include "faults/Points.h"
#include "faults/Undisturbed.h"

namespace {

constexpr char usage[] =
    "usage: private-gateway veld-faults crash|calls [SHARD SHARDS [SAMPLE SEED [SCENARIO]]]\n";

unsigned number(const std::vector<std::string>& words, std::size_t at, unsigned otherwise) {
  return at < words.size() ? static_cast<unsigned>(std::stoul(words[at])) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const std::filesystem::path build =
      std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
  const char* const daemon = std::getenv("VELD");
  const Trial::Programs programs{daemon != nullptr ? daemon : build / "daemon/veld", build / "simulator"};
  const std::string what = words.empty() ? "" : words[0];
  bool good = false;
  if (what == "crash" || what == "calls") {
    const Selection selection{number(words, 1, 0), number(words, 2, 1), number(words, 3, 0),
                              number(words, 4, 0), words.size() > 5 ? words[5] : ""};
    good = (what == "crash" ? tryCrashPoints : tryFaultPoints)(programs, selection);
  } else if (what == "accidents") {
    good = tryAccidents(programs);
  } else if (what == "undisturbed") {
    good = writeUndisturbed(programs, std::cout);
  } else {
    std::cerr << usage;
    return 2;
  }
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
