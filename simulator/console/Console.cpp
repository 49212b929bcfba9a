#include "simulator/console/Console.h"

#include <editline/readline.h>
#include <langinfo.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <regex>
#include <set>
#include <sstream>

namespace Simulator {
namespace {
constexpr char prompt[] = "gateway> ";
constexpr char historyFile[] = "/.veld-gateway-history";
constexpr char plain[] = "\033[0m";
constexpr char faint[] = "\033[2m";
constexpr char refusedColour[] = "\033[33m";
constexpr char welcome[] =
    "A simulated cellular gateway. \"help\" lists the commands. The tab key completes a command.\n"
    "Try  start,  receive +4917012345 \"p secret #ping 8.8.8.8 3\",  pass  and  requests,  in this order.\n";

// The colour of each syslog level, from 0 (emergency) to 7 (debug).
constexpr const char* colours[] = {"\033[1;31m", "\033[1;31m", "\033[1;31m", "\033[31m",
                                   "\033[33m",   "\033[36m",   plain,        faint};

// Global, because the line editor and the signal handler pass none of these values to the functions below.
Interpreter* interpreter = nullptr;
std::vector<std::string> candidates;
std::size_t nextAt = 0;

// Returns the words of a syntax that are not in capitals, such as "received" and "sending".
std::set<std::string> wordsOf(const std::string& arguments) {
  static const std::regex word("[a-z-][a-z0-9-]+");
  return {std::sregex_token_iterator(arguments.begin(), arguments.end(), word), {}};
}

// Returns the next candidate that begins with `begun`; null after the last. `state` is 0 in the first call.
char* nextCandidate(const char* begun, int state) {
  if (state == 0) nextAt = 0;
  while (nextAt < candidates.size()) {
    const std::string& candidate = candidates[nextAt++];
    if (candidate.compare(0, std::strlen(begun), begun) == 0) return strdup(candidate.c_str());
  }
  return nullptr;
}

char** complete(const char* begun, int start, int) {
  rl_attempted_completion_over = 1;  // do not complete file names
  std::string name;
  std::istringstream(std::string(rl_line_buffer, static_cast<std::size_t>(start))) >> name;
  candidates.clear();
  for (const Command& command : interpreter->all()) {
    if (name.empty() || name == "help") candidates.emplace_back(command.name);
    if (name != command.name) continue;
    const std::set<std::string> words = wordsOf(command.arguments);
    candidates.assign(words.begin(), words.end());
  }
  if (name.empty()) candidates.insert(candidates.end(), {"help", "quit"});
  return rl_completion_matches(begun, nextCandidate);
}

// Prints the results of API commands from number `nextEvent` on, and the log from line `nextLine` on.
void printNews(std::size_t& nextEvent, std::size_t& nextLine) {
  const auto turn = interpreter->lock();
  Gateway& gateway = interpreter->gateway();
  const std::vector<Responder::Event>& events = gateway.responder.events();
  for (; nextEvent < events.size(); ++nextEvent) std::cout << events[nextEvent].text << "\n";
  for (const SyslogServer::Line& line : gateway.syslog.lines(nextLine)) {
    std::cout << "  " << colours[line.level] << SyslogServer::levelNames[line.level] << " " << line.text
              << plain << "\n";
    ++nextLine;
  }
  std::cout.flush();
}

// Sets the handler of Ctrl-C. If `flags` is 0, Ctrl-C ends readline(). With SA_RESTART, interrupted system
// calls continue.
void handleInterrupt(int flags) {
  struct sigaction action = {};
  action.sa_handler = [](int) { interpreter->gateway().daemon.interrupted = true; };
  action.sa_flags = flags;
  sigaction(SIGINT, &action, nullptr);
}

char* readCommand() {
  interpreter->gateway().daemon.interrupted = false;
  handleInterrupt(0);
  rl_resize_terminal();
  char* line = readline(prompt);
  handleInterrupt(SA_RESTART);
  return line;
}

void setUpEditor(const std::string& history) {
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) std::setlocale(LC_CTYPE, "C.UTF-8");
  rl_readline_name = "gateway";
  rl_catch_signals = 0;  // the editor's own handler works only once in a line and changes the terminal
  rl_attempted_completion_function = complete;
  using_history();
  stifle_history(1000);
  read_history(history.c_str());
}
}  // namespace

void runConsole(Interpreter& commands) {
  const char* home = std::getenv("HOME");
  const std::string history = std::string(home == nullptr ? "" : home) + historyFile;
  interpreter = &commands;
  setUpEditor(history);
  std::cout << welcome;
  std::size_t nextEvent = 0;
  std::size_t nextLine = 0;
  for (;;) {
    char* typed = readCommand();
    if (typed == nullptr && !commands.gateway().daemon.interrupted) break;
    if (typed == nullptr) {
      std::cout << "\n";
      continue;
    }
    const std::string line = typed;
    std::free(typed);
    if (line == "quit" || line == "exit") break;
    if (!line.empty()) add_history(line.c_str());
    const Answer answer = commands.execute(line);
    if (!answer.text.empty()) std::cout << (answer.good ? "" : refusedColour) << answer.text << plain << "\n";
    commands.carryOut();
    printNews(nextEvent, nextLine);
  }
  write_history(history.c_str());
  std::cout << std::endl;
}
}  // namespace Simulator
