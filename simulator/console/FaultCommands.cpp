#include <algorithm>

#include "simulator/console/Interpreter.h"

namespace Simulator {
namespace {

constexpr unsigned untilRepaired = 9999;
const std::vector<std::string> operations{"unread", "read", "delete", "send"};

std::string word(const CommandLine& line, std::size_t index) {
  return index < line.words().size() ? line.words()[index] : "";
}

Answer breakApi(Gateway& gateway, const CommandLine& line) {
  const std::string what = word(line, 1);
  const std::optional<unsigned> value = readNumber(word(line, 2));
  const bool valued = what == "code" || what == "slow";
  if (line.words().size() != (valued ? 3U : 2U) || (valued && !value)) return misuse();
  const std::vector<std::pair<std::string, ApiFault>> faults{{"code", ApiFault::Code},
                                                             {"garbage", ApiFault::Garbage},
                                                             {"slow", ApiFault::Slow},
                                                             {"close", ApiFault::Close},
                                                             {"silent", ApiFault::Silent}};
  for (const auto& [name, fault] : faults) {
    if (what != name) continue;
    gateway.api().setFault(fault, value.value_or(0));
    return {true, "The API is broken: " + gateway.api().fault() + "."};
  }
  if (what != "gone" && what != "refused") return misuse();
  gateway.api().close(what == "refused");
  return {true, what == "gone" ? "The API's socket is gone." : "The API refuses connections."};
}

Answer breakTool(Gateway& gateway, const CommandLine& line) {
  if (word(line, 1) == "gone" && line.words().size() == 2) {
    gateway.setToolThere(false);
    return {true, "The tool is gone."};
  }
  const std::string operation = word(line, 1);
  const std::string what = word(line, 2);
  const bool known = std::find(operations.begin(), operations.end(), operation) != operations.end();
  const std::optional<unsigned> times = line.words().size() == 4 ? readNumber(word(line, 3)) : untilRepaired;
  if (!known || !times || line.words().size() > 4) return misuse();
  const ToolFault fault = what == "fail"     ? ToolFault::Fail
                          : what == "hang"   ? ToolFault::Hang
                          : what == "kill"   ? ToolFault::Kill
                          : what == "silent" ? ToolFault::Silent
                                             : ToolFault::None;
  if (fault == ToolFault::None) return misuse();
  gateway.modem().setFault(operation, fault, *times);
  return {true, "The tool is broken: " + gateway.modem().faults().back() + "."};
}

Answer breakDisk(const std::string& folder) {
  if (Gateway::setFull(folder, true)) return {true, folder + " is full."};
  return wrong(folder + " is no file system of private-gateway's own (proot has none), and is not filled.");
}

Answer fault(Gateway& gateway, CommandLine& line) {
  const std::string what = word(line, 0);
  if (what == "api") return breakApi(gateway, line);
  if (what == "tool") return breakTool(gateway, line);
  if (what == "disk" && word(line, 1) == "full") return breakDisk("/var");
  if (what == "tmp" && word(line, 1) == "full") return breakDisk("/tmp");
  if (what != "syslog" || word(line, 1) != "gone") return misuse();
  gateway.syslog().close();
  return {true, "Syslog is gone."};
}

Answer repair(Gateway& gateway, CommandLine& line) {
  const std::string what = line.words().empty() ? "all" : line.words()[0];
  bool good = true;
  if (what == "all") {
    good = gateway.repairAll();
  } else if (what == "api") {
    gateway.api().setFault(ApiFault::None, 0);
    good = gateway.api().listening() || gateway.api().listen();
  } else if (what == "tool") {
    gateway.setToolThere(true);
    gateway.modem().clearFaults();
  } else if (what == "syslog") {
    good = gateway.syslog().listening() || gateway.syslog().listen();
  } else if (what == "disk" || what == "tmp") {
    Gateway::setFull(what == "disk" ? "/var" : "/tmp", false);
  } else {
    return misuse();
  }
  return good ? Answer{true, what == "all" ? "Everything works." : "Repaired: " + what + "."}
              : wrong("A socket could not be bound again.");
}

Answer faults(Gateway& gateway, CommandLine& line) {
  if (!line.words().empty()) return misuse();
  std::string text;
  if (!gateway.api().listening()) text += "api: no socket, or nobody listens\n";
  if (!gateway.api().fault().empty()) text += "api: " + gateway.api().fault() + "\n";
  if (!gateway.toolThere()) text += "tool: gone\n";
  for (const std::string& each : gateway.modem().faults()) text += "tool: " + each + "\n";
  if (!gateway.syslog().listening()) text += "syslog: gone\n";
  if (Gateway::isFull("/var")) text += "disk: full\n";
  if (Gateway::isFull("/tmp")) text += "tmp: full\n";
  for (const std::string& number : gateway.modem().refused()) text += "refused: " + number + "\n";
  return {true, text.empty() ? "Everything works." : text};
}

}  // namespace

const std::vector<Command>& faultCommands() {
  static const std::vector<Command> commands{
      {"fault",
       "api code N|garbage|slow SECONDS|close|silent|gone|refused, tool gone, tool unread|read|delete|send "
       "fail|hang|kill|silent [TIMES], syslog gone, disk full, tmp full",
       "makes something go wrong", fault},
      {"repair", "[api|tool|syslog|disk|tmp|all]", "puts it right again", repair},
      {"faults", "", "shows what is wrong", faults},
  };
  return commands;
}

}  // namespace Simulator
