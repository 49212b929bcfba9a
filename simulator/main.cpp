// simulator: the simulated gateway, for a person at the keyboard or in a browser, or for a script.
#include <fcntl.h>
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
    "usage: scripts/gateway [--script FILE] [--echo] [--with COMMAND]\n"
    "       scripts/gateway --page [PORT] [--with COMMAND]\n"
    "Commands come from the script, else from standard input: a console at a terminal, a script otherwise.\n"
    "--page serves a page on 127.0.0.1, port 8400 unless another is given (0: any that is free), beside the\n"
    "console; away from a terminal, until SIGINT or SIGTERM. The daemon then runs from the beginning.\n"
    "--with runs a shell command in the gateway beside the daemon, such as a program that uses its "
    "messages.\n"
    "VELD names the daemon's executable, if it is not the one of the same build.\n";

struct Arguments {
  std::string script;
  bool echo = false;
  std::string with;
  std::optional<unsigned> page;  ///< its port
};

[[noreturn]] void refuse(const std::string& problem) {
  std::cerr << "simulator: " << problem << "\n" << usage;
  std::exit(2);
}

Arguments read(int argc, char** argv) {
  constexpr option options[] = {
      {"script", required_argument, nullptr, 's'}, {"echo", no_argument, nullptr, 'e'},
      {"with", required_argument, nullptr, 'w'},   {"page", no_argument, nullptr, 'p'},
      {"help", no_argument, nullptr, 'h'},         {}};
  Arguments arguments;
  for (int option = 0; (option = getopt_long(argc, argv, "", options, nullptr)) != -1;) {
    if (option == 's') arguments.script = optarg;
    if (option == 'e') arguments.echo = true;
    if (option == 'w') arguments.with = optarg;
    if (option == 'p') arguments.page = pagePort;
    if (option == 'h') {
      std::cout << usage;
      std::exit(0);
    }
    if (option == '?') refuse("see --help");
  }
  if (arguments.page && optind < argc) {
    arguments.page = Simulator::readNumber(argv[optind++]);
    if (!arguments.page) refuse("a port is a number from 0 to 65535");
  }
  if (optind < argc) refuse(std::string("\"") + argv[optind] + "\" is one word too many");
  if (arguments.page && !arguments.script.empty()) refuse("a script needs no page");
  return arguments;
}

// Runs an integrator's program. Whatever is still running when the gateway ends, ends with it.
void runBeside(const std::string& command) {
  if (command.empty() || fork() != 0) return;
  setpgid(0, 0);  // Ctrl-C at the console is not meant for it
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  closefrom(STDERR_FILENO + 1);
  execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
  _exit(127);
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
  interpreter.execute("start");  // who opens the page is to see it at work
  if (atTerminal) Simulator::runConsole(interpreter);
  while (!atTerminal && sem_wait(&ended) != 0) continue;
  return 0;
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
  const char* program = std::getenv("VELD");
  Simulator::Gateway gateway(
      {program != nullptr ? program : folder + "/../daemon/veld", folder, !atTerminal && !arguments.page});
  runBeside(arguments.with);
  Simulator::Interpreter interpreter(gateway);
  if (arguments.page) return servePage(interpreter, *arguments.page, atTerminal);
  if (atTerminal) {
    Simulator::runConsole(interpreter);
    return 0;
  }
  Simulator::Script run(interpreter, arguments.script.empty() ? "standard input" : arguments.script,
                        arguments.echo);
  return run.run(arguments.script.empty() ? std::cin : file) ? 0 : 1;
}
