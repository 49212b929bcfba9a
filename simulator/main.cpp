// simulator: the simulated gateway. A terminal, a script or a page in a browser controls it.
#include <getopt.h>
#include <semaphore.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "simulator/console/Console.h"
#include "simulator/console/Script.h"
#include "simulator/page/PageServer.h"

namespace {
constexpr unsigned pagePort = 8400;
constexpr char usage[] =
    "usage: scripts/gateway [--script FILE] [--echo] [OPTION...]\n"
    "       scripts/gateway --page [PORT] [OPTION...]\n"
    "Runs veld in a simulated gateway, and executes a script from FILE or standard input. Without FILE, if\n"
    "standard input is a terminal, opens a console instead. The command \"help\" lists all commands.\n"
    "  --echo          prints each line of the script before its output\n"
    "  --page [PORT]   starts the daemon and serves a page on 127.0.0.1, port 8400 (0: any free port).\n"
    "                  At a terminal, also opens the console. Otherwise runs until SIGINT or SIGTERM.\n"
    "  --with COMMAND  runs a shell command beside the daemon, with sms and veldctl in its PATH. A script\n"
    "                  waits for COMMAND after its last line, and then exits with the status of COMMAND\n"
    "  --tool PROGRAM  uses PROGRAM instead of the simulated tool sms\n"
    "  --api none      does not serve the local API, so that a program of yours can serve it\n"
    "If the environment variable VELD is set, it names the daemon's executable.\n";

struct Arguments {
  std::string script;
  bool echo = false;
  std::string with;
  std::string tool;
  bool servesApi = true;
  std::optional<unsigned> page;  ///< the port of the page; nullopt: no page
};

[[noreturn]] void refuse(const std::string& problem) {
  std::cerr << "simulator: " << problem << "\nSee scripts/gateway --help.\n";
  std::exit(2);
}

std::string readTool(const std::string& path) {
  if (access(path.c_str(), X_OK) != 0) refuse("--tool: cannot run " + path);
  return std::filesystem::absolute(path);
}

Arguments read(int argc, char** argv) {
  constexpr option options[] = {
      {"script", required_argument, nullptr, 's'}, {"echo", no_argument, nullptr, 'e'},
      {"with", required_argument, nullptr, 'w'},   {"tool", required_argument, nullptr, 't'},
      {"api", required_argument, nullptr, 'a'},    {"page", no_argument, nullptr, 'p'},
      {"help", no_argument, nullptr, 'h'},         {}};
  Arguments arguments;
  for (int option = 0; (option = getopt_long(argc, argv, "", options, nullptr)) != -1;) {
    if (option == 's') arguments.script = optarg;
    if (option == 'e') arguments.echo = true;
    if (option == 'w') arguments.with = optarg;
    if (option == 't') arguments.tool = readTool(optarg);
    if (option == 'a' && std::string(optarg) != "none") refuse("the only value of --api is \"none\"");
    if (option == 'a') arguments.servesApi = false;
    if (option == 'p') arguments.page = pagePort;
    if (option == 'h') {
      std::cout << usage;
      std::exit(0);
    }
    if (option == '?') refuse("unknown option or missing value");
  }
  if (arguments.page && optind < argc) {
    arguments.page = Simulator::readNumber(argv[optind++]);
    if (!arguments.page) refuse("a port is a number from 0 to 65535");
  }
  if (optind < argc) refuse(std::string("unexpected argument \"") + argv[optind] + "\"");
  if (arguments.page && !arguments.script.empty()) refuse("use either --page or --script, not both");
  return arguments;
}

sem_t signalled;

void handleSignal(int) { sem_post(&signalled); }

void awaitSignal() {
  while (sem_wait(&signalled) != 0) continue;  // the signal can interrupt sem_wait() (EINTR)
}

bool servePage(Simulator::Interpreter& interpreter, unsigned port, bool atTerminal) {
  Simulator::PageServer page(interpreter);
  if (!page.listen(static_cast<int>(port))) {
    std::cerr << "simulator: port " << port << " is in use; --page 0 chooses a free port\n";
    return false;
  }
  std::cout << "The page: " << page.address() << std::endl;
  interpreter.execute("start");
  if (atTerminal)
    Simulator::runConsole(interpreter);
  else
    awaitSignal();
  return true;
}

bool runScript(Simulator::Interpreter& interpreter, const Arguments& arguments, std::istream& text) {
  Simulator::Script script(interpreter, arguments.script.empty() ? "standard input" : arguments.script,
                           arguments.echo);
  return script.run(text);
}
}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = read(argc, argv);
  std::ifstream file(arguments.script);
  if (!arguments.script.empty() && !file) refuse("cannot read " + arguments.script);
  const bool atTerminal = arguments.script.empty() && isatty(STDIN_FILENO) != 0;
  if (arguments.page && !atTerminal) {
    sem_init(&signalled, 0, 0);
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, handleSignal);
  }
  const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const char* const program = std::getenv("VELD");
  const std::string daemon = program != nullptr ? program : folder + "/../daemon/veld";
  const bool isScript = !atTerminal && !arguments.page;
  Simulator::Gateway gateway({daemon, folder, isScript, arguments.tool, arguments.servesApi});
  if (!arguments.with.empty()) gateway.runBeside(arguments.with);
  Simulator::Interpreter interpreter(gateway);
  bool good = true;
  if (arguments.page)
    good = servePage(interpreter, *arguments.page, atTerminal);
  else if (atTerminal)
    Simulator::runConsole(interpreter);
  else
    good = runScript(interpreter, arguments, arguments.script.empty() ? std::cin : file);
  return good ? gateway.program.status() : 1;
}
