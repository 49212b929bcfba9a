#include <signal.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>

#include "simulator/console/Interpreter.h"
#include "simulator/support/Files.h"

namespace Simulator {
namespace {
using Passed = DaemonProcess::Passed;

constexpr unsigned awaitSeconds = 30;
constexpr double forEver = 1e9;  // seconds
constexpr unsigned passSeconds = 5;
constexpr char applies[] = "; \"restart\" applies the change.";

Answer noSetting(const std::string& key) {
  return wrong("There is no setting \"" + key + "\"; \"settings\" shows all settings.");
}

std::string ended(Gateway& gateway) {
  return "The daemon ended with status " + gateway.daemon.ending() + ".";
}

Answer notRunning(Gateway& gateway) {
  const std::string before = gateway.daemon.ending().empty() ? "The daemon is not running." : ended(gateway);
  return wrong(before + " \"start\" starts it.");
}

// Returns the reason why a command ends before `what` has ended.
Answer stillWaits(Gateway& gateway, const std::string& what) {
  if (gateway.daemon.interrupted) return wrong("Interrupted. " + what + " continues.");
  const std::string hang = gateway.hang();
  if (hang.empty()) return wrong(what + " takes very long.");
  return wrong(what + " does not end: " + hang + "; \"repair\" ends the hang.");
}

Answer start(Gateway& gateway, const Arguments& given) {
  DaemonProcess& daemon = gateway.daemon;
  if (daemon.running())
    return {true, "The daemon already runs, as process " + std::to_string(daemon.pid()) + "."};
  if (const std::string problem = daemon.start(); !problem.empty()) return wrong(problem);
  if (given.has("--no-wait")) return {true, "The daemon is starting."};
  const Passed passed = daemon.awaitSleep(awaitSeconds);
  if (passed == Passed::Ended) return {true, ended(gateway)};
  if (passed == Passed::NotYet) return stillWaits(gateway, "The first pass");
  return {true, "The daemon runs, as process " + std::to_string(daemon.pid()) + "."};
}

Answer stop(Gateway& gateway, const Arguments&) {
  if (!gateway.daemon.running()) return notRunning(gateway);
  if (gateway.daemon.stop()) return {true, ended(gateway)};
  Answer answer = stillWaits(gateway, "The daemon's last pass");
  answer.text += " \"kill\" kills the daemon.";
  return answer;
}

Answer restart(Gateway& gateway, const Arguments& given) {
  // A daemon that hangs ends only after the repair. The start below would come too early.
  if (gateway.daemon.running() && !gateway.hang().empty()) return stillWaits(gateway, "The daemon's pass");
  const Answer stopped = gateway.daemon.running() ? stop(gateway, given) : Answer{};
  return stopped.good ? start(gateway, given) : stopped;
}

Answer killDaemon(Gateway& gateway, const Arguments& given) {
  const std::map<std::string, int> signals{
      {"KILL", SIGKILL}, {"TERM", SIGTERM}, {"HUP", SIGHUP}, {"INT", SIGINT}};
  const std::string name = given.words().empty() ? "KILL" : given.word(0);
  const auto found = signals.find(name);
  if (found == signals.end()) return wrong("\"" + name + "\" is not KILL, TERM, HUP or INT.");
  if (!gateway.daemon.signal(found->second)) return notRunning(gateway);
  return {true, "Sent SIG" + name + "."};
}

Answer passes(Gateway& gateway, unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    const Passed passed = gateway.daemon.pass();
    if (passed == Passed::Ended) return notRunning(gateway);
    if (passed == Passed::NotYet) return stillWaits(gateway, "Pass " + std::to_string(i + 1));
  }
  return {true, std::to_string(count) + (count == 1 ? " pass, " : " passes, ") +
                    std::to_string(count * passSeconds) + " seconds."};
}

Answer pass(Gateway& gateway, const Arguments& given) {
  if (!given.has("--no-wait")) return passes(gateway, given.number(0, 1));
  const Passed passed = gateway.daemon.awaitSleep(awaitSeconds);
  if (passed == Passed::Ended) return notRunning(gateway);
  if (passed == Passed::NotYet) return stillWaits(gateway, "The previous pass");
  gateway.clock.grant();
  return {true, "The pass has begun."};
}

// Reads a time such as "30", "30s", "5m" or "1h".
std::optional<unsigned> readSeconds(std::string text) {
  const std::map<char, unsigned> units{{'s', 1}, {'m', 60}, {'h', 3600}};
  const auto unit = text.empty() ? units.end() : units.find(text.back());
  if (unit == units.end()) return readNumber(text);
  text.pop_back();
  const std::optional<unsigned> number = readNumber(text);
  return number ? std::optional(*number * unit->second) : std::nullopt;
}

Answer wait(Gateway& gateway, const Arguments& given) {
  const std::optional<unsigned> seconds = readSeconds(given.word(0));
  if (!seconds) return wrong("\"" + given.word(0) + "\" is not a time such as 30s, 5m or 1h.");
  return passes(gateway, (*seconds + passSeconds - 1) / passSeconds);
}

Answer date(Gateway& gateway, const Arguments& given) {
  const std::string& day = given.word(0);
  std::tm noon{};
  const char* const end = strptime(day.c_str(), "%Y-%m-%d", &noon);
  const int dayOfMonth = noon.tm_mday;
  noon.tm_hour = 12;
  noon.tm_isdst = -1;
  const std::time_t time = std::mktime(&noon);
  // mktime() turns 30 February into 2 March.
  if (end == nullptr || *end != '\0' || noon.tm_mday != dayOfMonth)
    return wrong("\"" + day + "\" is not a day such as 2045-06-15.");
  gateway.clock.set(time);
  return {true, "It is noon on " + day + "."};
}

// An event for which "await" waits.
struct Event {
  const char* name;
  bool (*happened)(Gateway& gateway);
  std::string (*text)(Gateway& gateway);
  bool needsPasses = false;  // true: passes run while "await" waits
  double seconds = awaitSeconds;
};

const Event events[] = {
    {"pass", [](Gateway& gateway) { return gateway.clock.sleeping(); },
     [](Gateway&) { return std::string("The daemon sleeps."); }},
    {"tool", [](Gateway& gateway) { return !gateway.modem.hangingOperation().empty(); },
     [](Gateway&) { return std::string("The tool hangs."); }},
    {"request", [](Gateway& gateway) { return gateway.api.waiting() > 0; },
     [](Gateway&) { return std::string("A request waits for its answer."); }},
    {"api", [](Gateway&) { return std::filesystem::exists(LocalApiServer::socketPath); },
     [](Gateway&) { return std::string("The API's socket is there."); }},
    {"exit", [](Gateway& gateway) { return !gateway.daemon.running(); }, ended, true},
    {"program", [](Gateway& gateway) { return !gateway.program.running(); },
     [](Gateway& gateway) {
       return "The program has ended with status " + std::to_string(gateway.program.status()) + ".";
     },
     true, forEver},
};

Answer await(Gateway& gateway, const Arguments& given) {
  const Event& event = *std::find_if(std::begin(events), std::end(events),
                                     [&](const Event& one) { return one.name == given.word(0); });
  const auto happened = [&] {
    if (event.happened(gateway)) return true;
    if (event.needsPasses && gateway.clock.sleeping()) gateway.clock.grant();
    return false;
  };
  if (gateway.daemon.wait(event.seconds, happened)) return {true, event.text(gateway)};
  return wrong(gateway.daemon.interrupted ? "Interrupted." : "It did not happen within 30 seconds.");
}

Answer settings(Gateway& gateway, const Arguments& given) {
  const bool remove = given.has("--remove");
  const std::string& key = given.word(0);
  if (given.words().empty()) return {true, gateway.settings.value().toStyledString()};
  if (!remove && given.words().size() == 1) return wrong("The value for " + key + " is missing.");
  const Json::Value value = jsonOrText(given.word(1));
  const bool good = remove ? gateway.settings.remove(key) : gateway.settings.set(key, value);
  if (!good) return noSetting(key);
  return {true, key + (remove ? " is removed" : " is " + toLine(value)) + applies};
}

// If the first word is "off", switches `part` off: the password or the whitelist. Otherwise sets `member`.
Answer setPermission(Gateway& gateway, const std::string& part, const std::string& member,
                     const Json::Value& value, const Arguments& given) {
  const std::string path = "smsCommands." + part + ".";
  const bool off = given.word(0) == "off";
  if (!gateway.settings.set(path + "enabled", !off)) return noSetting(path + "enabled");
  if (!off) gateway.settings.set(path + member, value);
  std::string text = "The " + part + " is";
  for (const std::string& word : given.words()) text += " " + word;
  return {true, text + applies};
}

Answer password(Gateway& gateway, const Arguments& given) {
  return setPermission(gateway, "password", "text", given.word(0), given);
}

Answer whitelist(Gateway& gateway, const Arguments& given) {
  Json::Value numbers(Json::arrayValue);
  for (const std::string& number : given.words()) numbers.append(number);
  return setPermission(gateway, "whitelist", "numbers", numbers, given);
}

Answer timings(Gateway&, const Arguments& given) {
  if (!Settings::setTimings(given.word(0))) return wrong("Cannot write the timers file.");
  return {true, "The back-off timers are " + given.word(0) + applies};
}
}  // namespace

std::vector<Command> daemonCommands() {
  return {
      {"start", "[--no-wait]", "starts the daemon and waits for its first pass", start, true},
      {"stop", "", "sends the daemon SIGTERM and waits until it has ended", stop, true},
      {"restart", "[--no-wait]", "stops the daemon and starts it again with the current settings", restart,
       true},
      {"kill", "[KILL|TERM|HUP|INT]", "sends the daemon a signal and does not wait", killDaemon},
      {"pass", "[N], [--no-wait]", "runs N passes of the daemon now; each pass advances the clock by 5 s",
       pass, true},
      {"wait", "TIME", "advances the clock by TIME, such as 30s, 5m or 1h, and runs the passes of that time",
       wait, true},
      {"date", "DAY", "sets the clock to noon on DAY, such as 2045-06-15", date},
      {"await", "pass|tool|request|api|exit|program",
       "waits until a pass ends, the tool hangs, a request waits, the API's socket exists, the daemon ends,"
       " or the program of --with ends; passes run during \"await exit\" and \"await program\"",
       await, true},
      {"settings", "[KEY] [VALUE] [--remove]",
       "shows all settings, or changes a setting, as in smsCommands.pingEnabled false", settings},
      {"password", "TEXT|off", "sets the password that a command needs; off: no password", password},
      {"whitelist", "off, NUMBER...", "sets the numbers that may send commands; off: all numbers", whitelist},
      {"timings", "INTERVALS", "sets the seconds between the attempts to send a message, as in [30,60]",
       timings},
  };
}
}  // namespace Simulator
