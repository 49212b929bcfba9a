// simulator: the simulated gateway, for a person at the keyboard or in a browser, or for a script.
#include <semaphore.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "simulator/console/Console.h"
#include "simulator/console/Script.h"
#include "simulator/page/PageServer.h"

namespace {

constexpr unsigned pagePort = 8400;
constexpr char usage[] =
    "usage: simulator [--script FILE] [--echo]\n"
    "       simulator --page [PORT]\n"
    "Commands come from the script, else from standard input: a console at a terminal, a script otherwise.\n"
    "--page serves a page on 127.0.0.1, port 8400 unless another is given (0: any that is free), beside the\n"
    "console; away from a terminal, until SIGINT or SIGTERM.\n"
    "VELD names the daemon's executable, if it is not the one of the same build.\n";

struct Arguments {
  bool good = true;
  bool help = false;
  std::string script;
  bool echo = false;
  bool page = false;
  unsigned port = pagePort;
};

Arguments read(const std::vector<std::string>& words) {
  Arguments arguments;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--echo") {
      arguments.echo = true;
    } else if (words[i] == "--script" && i + 1 < words.size()) {
      arguments.script = words[++i];
    } else if (words[i] == "--page") {
      arguments.page = true;
      if (i + 1 == words.size()) continue;
      const std::optional<unsigned> port = Simulator::readNumber(words[++i]);
      arguments.good = arguments.good && port;
      arguments.port = port.value_or(0);
    } else {
      arguments.help = words[i] == "--help";
      arguments.good = false;
    }
  }
  arguments.good = arguments.good && !(arguments.page && !arguments.script.empty());
  return arguments;
}

sem_t ended;

void end(int) { sem_post(&ended); }

int servePage(Simulator::Interpreter& interpreter, unsigned port, bool atTerminal) {
  Simulator::PageServer page(interpreter);
  if (!page.listen(static_cast<int>(port))) {
    std::cerr << "simulator: port " << port << " is taken; --page 0 takes any that is free\n";
    return 1;
  }
  std::cout << "The page: " << page.address() << std::endl;
  if (atTerminal) {
    Simulator::Console(interpreter).run();
    return 0;
  }
  interpreter.execute("start");
  while (sem_wait(&ended) != 0) continue;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = read({argv + 1, argv + argc});
  if (!arguments.good) {
    std::cerr << usage;
    return arguments.help ? 0 : 2;
  }
  std::ifstream file(arguments.script);
  if (!arguments.script.empty() && !file) {
    std::cerr << "simulator: cannot read " << arguments.script << "\n";
    return 2;
  }
  const bool atTerminal = arguments.script.empty() && isatty(STDIN_FILENO) != 0;
  if (arguments.page && !atTerminal) {
    sem_init(&ended, 0, 0);
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, end);
  }
  const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const char* program = std::getenv("VELD");
  Simulator::Gateway gateway(
      {program != nullptr ? program : folder + "/../daemon/veld", folder, !atTerminal && !arguments.page});
  Simulator::Interpreter interpreter(gateway);
  if (arguments.page) return servePage(interpreter, arguments.port, atTerminal);
  if (atTerminal) {
    Simulator::Console(interpreter).run();
    return 0;
  }
  Simulator::Script run(interpreter, arguments.script.empty() ? "standard input" : arguments.script,
                        arguments.echo);
  return run.run(arguments.script.empty() ? std::cin : file) ? 0 : 1;
}
