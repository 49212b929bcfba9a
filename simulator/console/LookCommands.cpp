#include <algorithm>

#include "simulator/console/Interpreter.h"
#include "simulator/support/Files.h"

namespace Simulator {
namespace {

std::string lines(const std::vector<Json::Value>& values) {
  std::string text;
  for (const Json::Value& value : values) text += toLine(value) + "\n";
  return text;
}

Answer records(Gateway& gateway, CommandLine& line) {
  (void)gateway;
  const std::vector<std::string>& boxes = Gateway::boxes();
  if (line.words().size() != 1 || std::find(boxes.begin(), boxes.end(), line.words()[0]) == boxes.end())
    return misuse();
  return {true, lines(Gateway::records(line.words()[0]))};
}

Answer record(Gateway& gateway, CommandLine& line) {
  (void)gateway;
  if (line.words().size() != 1) return misuse();
  for (const std::string& box : Gateway::boxes()) {
    const std::string path = Gateway::folderOf(box) + "/" + line.words()[0];
    if (const std::string text = readFile(path); !text.empty())
      return {true, std::string(path).append("\n").append(text)};
  }
  return wrong("There is no record " + line.words()[0] + "; \"records received\" lists some.");
}

Answer requests(Gateway& gateway, CommandLine& line) {
  const bool all = line.takeFlag("--all");
  if (!line.words().empty()) return misuse();
  std::vector<Json::Value> values;
  for (const LocalApiServer::Request& request : gateway.api().requests()) {
    if (!all && request.method != "POST") continue;
    Json::Value value;
    value["path"] = request.path;
    if (!readJson(request.body, value["body"])) value["body"] = request.body;
    values.push_back(value);
  }
  return {true, lines(values)};
}

Answer modem(Gateway& gateway, CommandLine& line) {
  if (line.words().size() == 1 && line.words()[0] == "sent") return {true, lines(gateway.modem().sent())};
  if (!line.words().empty()) return misuse();
  return {true, "unread " + std::to_string(gateway.modem().unread()) + ", read " +
                    std::to_string(gateway.modem().read()) + ", sent " +
                    std::to_string(gateway.modem().sent().size())};
}

Answer log(Gateway& gateway, CommandLine& line) {
  static std::size_t shown = 0;
  const bool onlyNew = line.takeFlag("--new");
  if (!line.words().empty()) return misuse();
  const std::vector<SyslogServer::Line> all = gateway.syslog().lines();
  std::string text;
  for (std::size_t i = onlyNew ? shown : 0; i < all.size(); ++i) {
    text += std::string(SyslogServer::levelName(all[i].level)) + " " + all[i].text + "\n";
  }
  shown = all.size();
  return {true, text};
}

Answer status(Gateway& gateway, CommandLine& line) {
  if (!line.words().empty()) return misuse();
  const std::string ending = gateway.daemon().ending();
  std::string text = gateway.daemon().running()
                         ? "daemon: process " + std::to_string(gateway.daemon().pid()) + ", " +
                               std::to_string(gateway.daemon().descriptors()) + " descriptors, " +
                               std::to_string(gateway.daemon().children()) + " children"
                     : ending.empty() ? "daemon: not started"
                                      : "daemon: ended with status " + ending;
  for (const std::string& box : Gateway::boxes()) {
    text += "\n" + box + ": " + std::to_string(Gateway::records(box).size());
  }
  return {true, text + "\nmodem: " + modem(gateway, line).text};
}

}  // namespace

const std::vector<Command>& lookCommands() {
  static const std::vector<Command> commands{
      {"status", "", "shows the whole gateway on a few lines", status},
      {"records", "received|sending|sent|failed", "shows the records of a folder, one JSON object a line",
       records},
      {"record", "GUID", "shows one record's file", record},
      {"requests", "[--all]", "shows the commands that reached the API (--all: every request), one a line",
       requests},
      {"modem", "[sent]", "shows the modem's store, or the messages that it has sent", modem},
      {"log", "[--new]", "shows the log (--new: since it was last shown)", log},
  };
  return commands;
}

}  // namespace Simulator
