// gateway: the simulated gateway, for a person at the keyboard or a script.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "simulator/Console.h"
#include "simulator/Script.h"

namespace {

constexpr char kUsage[] =
    "usage: gateway [--script FILE] [--echo]\n"
    "Commands come from the script, else from standard input: a console at a terminal, a script otherwise.\n"
    "VELD names the daemon's executable, if it is not the one of the same build.\n";

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  std::string script;
  bool echo = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--echo") {
      echo = true;
    } else if (words[i] == "--script" && i + 1 < words.size()) {
      script = words[++i];
    } else {
      std::cerr << kUsage;
      return words[i] == "--help" ? 0 : 2;
    }
  }
  std::ifstream file(script);
  if (!script.empty() && !file) {
    std::cerr << "gateway: cannot read " << script << "\n";
    return 2;
  }
  const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const char* program = std::getenv("VELD");
  const bool atTerminal = script.empty() && isatty(STDIN_FILENO) != 0;
  simulator::Gateway gateway(
      {program != nullptr ? program : folder + "/../daemon/veld", folder, !atTerminal});
  simulator::Commands commands(gateway);
  if (atTerminal) {
    simulator::Console(commands).run();
    return 0;
  }
  simulator::Script run(commands, script.empty() ? "standard input" : script, echo);
  return run.run(script.empty() ? std::cin : file) ? 0 : 1;
}
