// sms: lists, deletes and sends messages for the SMS daemon, on a modem of ModemManager or on a serial port.
#include <syslog.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/sms/Alphabet.h"
#include "standalone/sms/Commands.h"
#include "standalone/sms/Config.h"
#include "standalone/sms/Deadline.h"
#include "standalone/sms/ManagerModem.h"
#include "standalone/sms/Pdu.h"
#include "standalone/sms/PortModem.h"
#include "standalone/sms/State.h"

namespace {
using namespace Standalone;
using Words = std::vector<std::string>;

constexpr char usage[] =
    "sms: usage: sms [--verbose] list unread | list read | delete read | send -f FILE NUMBER | status "
    "[--json]\n";
constexpr std::chrono::seconds timeLimit(60);
// Less than the five minutes after which systemd's watchdog restarts the daemon.
constexpr std::chrono::seconds sendTimeLimit(240);

bool isSend(const Words& words) {
  return words.size() == 4 && words[0] == "send" && words[1] == "-f" && !words[3].empty();
}

bool isStatus(const Words& words) { return words == Words{"status"} || words == Words{"status", "--json"}; }

bool isValid(const Words& words) {
  return words == Words{"list", "unread"} || words == Words{"list", "read"} ||
         words == Words{"delete", "read"} || isSend(words) || isStatus(words);
}

std::string textIn(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  if (!in) throw Problem("cannot read " + file);
  if (!isUtf8(text.str())) throw Problem("the text in " + file + " is not valid UTF-8");
  if (text.str().find('\0') != std::string::npos) throw Problem("the text in " + file + " contains a NUL");
  return text.str();
}

std::unique_ptr<Modem> openModem(State& state, const Deadline& deadline) {
  const char* const file = std::getenv("SMS_CONFIG");
  const Config config = Config::read(file != nullptr && *file != '\0' ? file : Config::standardFile);
  if (!config.port.empty()) return std::make_unique<PortModem>(config, state, deadline);
  return std::make_unique<ManagerModem>(config, state, deadline);
}

// Logs `problem` if it has changed since the last call. An empty text means that the last problem has ended.
void logChange(State& state, const std::string& problem) {
  if (state.problem == problem) return;
  openlog("sms", LOG_PID, LOG_DAEMON);
  if (problem.empty())
    syslog(LOG_NOTICE, "no longer: %s", state.problem.c_str());
  else
    syslog(LOG_ERR, "%s", problem.c_str());
  state.problem = problem;
  state.save();
}

void send(Modem& modem, const Words& words, bool verbose) {
  const std::string text = textIn(words[2]);
  if (!isNumber(words[3])) throw Problem("\"" + words[3] + "\" is not a valid number");
  modem.prepare();
  modem.send(words[3], text);
  if (verbose) std::cout << "sms: sent to " << words[3] << "\n";
}

int showStatus(State& state, const Words& words, const Deadline& deadline) {
  Status status;
  try {
    status = openModem(state, deadline)->status();
  } catch (const Problem& problem) {
    status.problem = problem.what();
  }
  std::cout << printed(status, words.size() == 2);
  return status.problem.empty() ? 0 : 1;
}

// Runs `list` or `delete`. Logs a problem, because the daemon ignores the exit status of a listing.
void serve(State& state, const Words& words, const Deadline& deadline) {
  try {
    const std::unique_ptr<Modem> modem = openModem(state, deadline);
    state.bind(modem->binding());
    modem->prepare();
    Commands commands(*modem, state);
    if (words[0] == "delete")
      commands.deleteRead();
    else if (words[1] == "read")
      commands.listRead(std::cout);
    else
      commands.listUnread(std::cout);
    if (words[0] == "delete") return;
    const std::string warning = modem->warning();
    if (!warning.empty()) throw Problem(warning);
    if (words[1] == "unread") logChange(state, "");
  } catch (const Problem& problem) {
    logChange(state, problem.what());
    throw;
  }
}

int run(const Words& words, bool verbose) {
  const Deadline deadline(isSend(words) ? sendTimeLimit : timeLimit);
  State state(State::standardFolder, deadline);
  if (isStatus(words)) return showStatus(state, words, deadline);
  if (isSend(words))
    send(*openModem(state, deadline), words, verbose);
  else
    serve(state, words, deadline);
  return 0;
}
}  // namespace

int main(int argc, char** argv) {
  Words words(argv + 1, argv + argc);
  const bool verbose = !words.empty() && words.front() == "--verbose";
  if (verbose) words.erase(words.begin());
  if (!isValid(words)) {
    std::cerr << usage;
    return 2;
  }
  try {
    return run(words, verbose);
  } catch (const std::exception& problem) {
    std::cerr << "sms: " << problem.what() << "\n";
    return 1;
  }
}
