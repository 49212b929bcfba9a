#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <ctime>

#include "simulator/console/Interpreter.h"
#include "simulator/support/Files.h"

namespace Simulator {
namespace {

constexpr double awaitSeconds = 30;
constexpr unsigned passSeconds = 5;

std::string ended(Gateway& gateway) {
  return "The daemon ended with status " + gateway.daemon().ending() + ".";
}

Answer start(Gateway& gateway, CommandLine& line) {
  const bool wait = !line.takeFlag("--no-wait");
  if (!line.words().empty()) return misuse();
  std::string problem;
  if (!gateway.start(problem)) return wrong(problem);
  if (!wait) return {true, "The daemon is starting."};
  switch (gateway.awaitSleep(awaitSeconds)) {
    case Gateway::Passed::Yes:
      return {true, "The daemon runs, as process " + std::to_string(gateway.daemon().pid()) + "."};
    case Gateway::Passed::Ended:
      return {true, ended(gateway)};
    default:
      return wrong("The daemon has not ended its first pass within 30 seconds.");
  }
}

Answer stop(Gateway& gateway, CommandLine& line) {
  if (!line.words().empty()) return misuse();
  if (!gateway.daemon().running()) return wrong("The daemon is not running; \"start\" starts it.");
  if (!gateway.stop()) return wrong("The daemon did not end within 10 seconds; \"kill\" ends it.");
  return {true, ended(gateway)};
}

Answer restart(Gateway& gateway, CommandLine& line) {
  if (gateway.daemon().running()) {
    if (Answer answer = stop(gateway, line); !answer.good) return answer;
  }
  return start(gateway, line);
}

Answer killDaemon(Gateway& gateway, CommandLine& line) {
  const std::string name = line.words().empty() ? "KILL" : line.words()[0];
  const int number = name == "KILL"   ? SIGKILL
                     : name == "TERM" ? SIGTERM
                     : name == "HUP"  ? SIGHUP
                     : name == "INT"  ? SIGINT
                                      : 0;
  if (number == 0 || line.words().size() > 1) return misuse();
  if (!gateway.daemon().signal(number)) return wrong("The daemon is not running; \"start\" starts it.");
  return {true, "Sent SIG" + name + "."};
}

Answer passes(Gateway& gateway, unsigned count) {
  gateway.takeInterrupt();
  for (unsigned i = 0; i < count; ++i) {
    if (gateway.takeInterrupt()) return wrong("Interrupted after " + std::to_string(i) + " passes.");
    switch (gateway.pass()) {
      case Gateway::Passed::Yes:
        break;
      case Gateway::Passed::Ended:
        return wrong(gateway.daemon().ending().empty() ? "The daemon is not running; \"start\" starts it."
                                                       : ended(gateway));
      default:
        return wrong("The daemon has been in one pass for a minute.");
    }
  }
  return {true, std::to_string(count) + (count == 1 ? " pass, " : " passes, ") +
                    std::to_string(count * passSeconds) + " seconds."};
}

Answer pass(Gateway& gateway, CommandLine& line) {
  const bool wait = !line.takeFlag("--no-wait");
  const std::optional<unsigned> count = line.words().empty() ? 1 : readNumber(line.words()[0]);
  if (line.words().size() > 1 || !count || (!wait && *count != 1)) return misuse();
  if (wait) return passes(gateway, *count);
  if (gateway.awaitSleep(awaitSeconds) != Gateway::Passed::Yes)
    return wrong("The daemon is not waiting for a pass.");
  gateway.grantPass();
  return {true, "The pass has begun."};
}

Answer wait(Gateway& gateway, CommandLine& line) {
  if (line.words().size() != 1) return misuse();
  std::string text = line.words()[0];
  unsigned unit = 1;
  if (!text.empty() && text.find_first_of("smh") == text.size() - 1) {
    unit = text.back() == 'h' ? 3600 : text.back() == 'm' ? 60 : 1;
    text.pop_back();
  }
  const std::optional<unsigned> number = readNumber(text);
  if (!number) return misuse();
  return passes(gateway, (*number * unit + passSeconds - 1) / passSeconds);
}

Answer date(Gateway& gateway, CommandLine& line) {
  std::tm noon{};
  if (line.words().size() != 1) return misuse();
  const char* const end = strptime(line.words()[0].c_str(), "%Y-%m-%d", &noon);
  if (end == nullptr || *end != '\0') return misuse();
  noon.tm_hour = 12;
  noon.tm_isdst = -1;
  gateway.clock().set(std::mktime(&noon));
  return {true, "It is noon on " + line.words()[0] + "."};
}

Answer await(Gateway& gateway, CommandLine& line) {
  const std::string what = line.words().size() == 1 ? line.words()[0] : "";
  if (what != "pass" && what != "tool" && what != "request" && what != "exit") return misuse();
  // What a signal asked for in the middle of a pass is done after the sleep behind it.
  bool granted = what != "exit";
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(awaitSeconds);
  while (std::chrono::steady_clock::now() < end) {
    if (what == "exit" && !gateway.daemon().running()) return {true, ended(gateway)};
    if (!granted && gateway.awaitSleep(0) == Gateway::Passed::Yes) {
      gateway.grantPass();
      granted = true;
    }
    if (what == "pass" && gateway.awaitSleep(0) == Gateway::Passed::Yes) return {true, "The daemon sleeps."};
    if (what == "tool" && gateway.modem().hanging()) return {true, "The tool hangs."};
    if (what == "request" && gateway.api().waiting() > 0) return {true, "A request waits for its answer."};
    usleep(1000);
  }
  return wrong("That did not happen within 30 seconds.");
}

Answer carryOut(Gateway& gateway, CommandLine& line) {
  if (!line.words().empty()) return misuse();
  const std::string done = gateway.carryOut();
  return {true, done.empty() ? "The API was asked for nothing new." : done};
}

Answer settings(Gateway& gateway, CommandLine& line) {
  const bool remove = line.takeFlag("--remove");
  if (line.words().empty() && !remove) return {true, gateway.settings().value().toStyledString()};
  if (line.words().size() != (remove ? 1U : 2U)) return misuse();
  const std::string& key = line.words()[0];
  Json::Value value;
  if (!remove && !readJson(line.words()[1], value)) value = line.words()[1];
  const bool good = remove ? gateway.settings().remove(key) : gateway.settings().set(key, value);
  if (!good) return wrong("The settings have no place \"" + key + "\"; \"settings\" shows them.");
  return {true, remove ? key + " is gone; \"restart\" applies it."
                       : key + " is " + toLine(value) + "; \"restart\" applies it."};
}

Answer password(Gateway& gateway, CommandLine& line) {
  if (line.words().size() != 1) return misuse();
  const bool off = line.words()[0] == "off";
  gateway.settings().set("smsCommands.password.enabled", !off);
  if (!off) gateway.settings().set("smsCommands.password.text", line.words()[0]);
  return {true, "The password is " + line.words()[0] + "; \"restart\" applies it."};
}

Answer whitelist(Gateway& gateway, CommandLine& line) {
  if (line.words().empty()) return misuse();
  const bool off = line.words()[0] == "off" && line.words().size() == 1;
  Json::Value numbers(Json::arrayValue);
  for (const std::string& number : line.words()) numbers.append(number);
  gateway.settings().set("smsCommands.whitelist.enabled", !off);
  if (!off) gateway.settings().set("smsCommands.whitelist.numbers", numbers);
  return {true, "The whitelist is " + line.rest(0) + "; \"restart\" applies it."};
}

Answer timings(Gateway& gateway, CommandLine& line) {
  if (line.words().size() != 1) return misuse();
  if (!gateway.settings().setTimings(line.words()[0])) return wrong("The timers file could not be written.");
  return {true, "The back-off timers are " + line.words()[0] + "; \"restart\" applies it."};
}

}  // namespace

const std::vector<Command>& daemonCommands() {
  static const std::vector<Command> commands{
      {"start", "[--no-wait]", "starts the daemon and waits for its first pass", start},
      {"stop", "", "asks the daemon to end (SIGTERM) and waits until it has", stop},
      {"restart", "", "stops the daemon and starts it again, with the settings as they are now", restart},
      {"kill", "[KILL|TERM|HUP|INT]", "sends the daemon a signal and does not wait", killDaemon},
      {"pass", "[N] [--no-wait]", "runs N passes of the daemon at once, five seconds each", pass},
      {"wait", "5m", "lets so much time pass in a moment: seconds, or with m or h", wait},
      {"date", "2045-06-15", "sets the daemon's clocks to noon of a day", date},
      {"await", "pass|tool|request|exit",
       "waits for a pass to end, a tool or a request to hang, the daemon to end", await},
      {"carry-out", "",
       "the gateway does what its API was asked for, and answers (the console does so by itself)", carryOut},
      {"settings", "[KEY VALUE|KEY --remove]",
       "shows the settings or changes one, as in smsCommands.pingEnabled false", settings},
      {"password", "TEXT|off", "the password that a command must carry", password},
      {"whitelist", "NUMBER...|off", "the numbers that may send commands", whitelist},
      {"timings", "[30,60]", "the seconds between two tries of a failed message; the brackets belong to it",
       timings},
  };
  return commands;
}

}  // namespace Simulator
