// simulator: the simulated gateway, for a person at a terminal or in a browser, or for a script.
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
    "Runs veld in a simulated gateway. Commands come from FILE or standard input: a console at a terminal,\n"
    "otherwise a script. The clock runs in the console and stands still in a script (see \"help\").\n"
    "  --page [PORT]   starts the daemon and serves a page on 127.0.0.1, port 8400 (0: any free port), "
    "beside\n"
    "                  the console; without a terminal it reads no commands and ends on SIGINT or SIGTERM\n"
    "  --echo          prints each line of the script before its output\n"
    "  --with COMMAND  runs a shell command beside the daemon, with sms and veldctl in its PATH; a script\n"
    "                  waits for it after the last line or in \"await program\", and exits with its status\n"
    "  --tool PROGRAM  replaces the simulated tool sms by PROGRAM\n"
    "  --api none      does not serve the API, so that your program can; \"await api\" waits for its socket\n"
    "The environment variable VELD names another executable of the daemon.\n";

struct Arguments {
  std::string script;
  bool echo = false;
  std::string with;
  std::string tool;
  bool servesApi = true;
  std::optional<unsigned> page;  ///< the port of the page
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
    if (option == 'a' && std::string(optarg) != "none") refuse("--api takes \"none\" only");
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
  if (arguments.page && !arguments.script.empty()) refuse("--page and --script exclude each other");
  return arguments;
}

sem_t ended;

void end(int) { sem_post(&ended); }

void awaitSignal() {
  while (sem_wait(&ended) != 0) continue;  // fails with EINTR before the handler posts
}

bool servePage(Simulator::Interpreter& interpreter, unsigned port, bool atTerminal) {
  Simulator::PageServer page(interpreter);
  if (!page.listen(static_cast<int>(port))) {
    std::cerr << "simulator: port " << port << " is taken; --page 0 takes any free port\n";
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
    sem_init(&ended, 0, 0);
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, end);
  }
  const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const char* const program = std::getenv("VELD");
  Simulator::Gateway gateway({program != nullptr ? program : folder + "/../daemon/veld", folder,
                              !atTerminal && !arguments.page, arguments.tool, arguments.servesApi});
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
