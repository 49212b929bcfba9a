#include "simulator/console/Interpreter.h"
#include "simulator/support/Files.h"

namespace Simulator {
namespace {
std::string lines(const std::vector<Json::Value>& values) {
  std::string text;
  for (const Json::Value& value : values) text += toLine(value) + "\n";
  return text;
}

Answer records(Gateway&, const Arguments& given) {
  return {true, lines(MessageFolders::records(given.word(0)))};
}

Answer veldctl(Gateway& gateway, const Arguments& given) { return {true, gateway.veldctl(given.words())}; }

Answer requests(Gateway& gateway, const Arguments& given) {
  std::vector<Json::Value> values;
  for (const LocalApiServer::Request& request : gateway.api.requests()) {
    if (given.has("--all") || request.method == "POST")
      values.push_back(object({{"path", request.path}, {"body", jsonOrText(request.body)}}));
  }
  return {true, lines(values)};
}

std::string counts(const Modem& modem) {
  return "unread " + std::to_string(modem.printed("unread").size()) + ", read " +
         std::to_string(modem.printed("read").size()) + ", sent " + std::to_string(modem.sent().size());
}

Answer modem(Gateway& gateway, const Arguments& given) {
  return {true, given.words().empty() ? counts(gateway.modem) : lines(gateway.modem.sent())};
}

Answer log(Gateway& gateway, const Arguments& given) {
  std::string text;
  for (const SyslogServer::Line& line : gateway.syslog.read(given.has("--new")))
    text += std::string(SyslogServer::levelNames[line.level]) + " " + line.text + "\n";
  return {true, text};
}

Answer status(Gateway& gateway, const Arguments&) {
  DaemonProcess& daemon = gateway.daemon;
  const std::string ending = daemon.ending();
  std::string text = "daemon: ";
  if (daemon.running())
    text += "process " + std::to_string(daemon.pid()) + ", " + daemon.footprint().text();
  else
    text += (ending.empty() ? "not started" : "ended with status " + ending) + "; \"start\" starts it";
  if (const std::string hang = gateway.hang(); !hang.empty())
    text += "\nhangs: " + hang + " for " + std::to_string(gateway.hangSeconds()) + " s";
  for (const char* name : MessageFolders::names)
    text += "\n" + std::string(name) + ": " + std::to_string(MessageFolders::records(name).size());
  return {true, text + "\nmodem: " + counts(gateway.modem)};
}
}  // namespace

std::vector<Command> showCommands() {
  return {
      {"status", "", "shows the daemon, the folders and the modem in a few lines", status},
      {"records", "received|sending|sent|failed", "shows the records of a folder, one JSON object per line",
       records},
      {"veldctl", "COMMAND [WORD...]", "runs veldctl(1) in the gateway", veldctl},
      {"requests", "[--all]", "shows the commands that the API received (--all: every request), one per line",
       requests},
      {"modem", "[sent]", "counts the messages in the modem, or shows the messages that it has sent", modem},
      {"log", "[--new]", "shows the log (--new: the lines since the last \"log\")", log},
  };
}
}  // namespace Simulator
